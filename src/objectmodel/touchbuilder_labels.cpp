#include "objectmodel/touchbuilder_labels_p.h"

#include <cmath>

namespace Vantrel {

namespace {

// In the pixels of the picture; texts are 10 high.
constexpr double cellSize = 2;
constexpr double letterWidth = 6.6;
constexpr double letterHeight = 9;
constexpr double gap = 3; ///< between texts side by side

int cellOf(double position)
{
    return int(std::floor(position / cellSize));
}

} // namespace

TouchLabel::TouchLabel(TouchPosition place, std::size_t length)
    : middle(place), half{(double(length) * letterWidth + gap) / 2, letterHeight / 2}
{}

TouchLabelSpace::TouchLabelSpace(double width, double height, double top)
    : m_columns(cellOf(width)), m_rows(cellOf(height)), m_top(top),
      m_cells(std::size_t(m_columns) * std::size_t(m_rows))
{}

void TouchLabelSpace::addLine(TouchPosition from, TouchPosition to)
{
    const int steps = 1 + int(std::hypot(to.x - from.x, to.y - from.y) / cellSize);
    for (int i = 0; i <= steps; ++i) {
        const double u = double(i) / steps;
        const int column = cellOf(from.x + u * (to.x - from.x));
        const int row = cellOf(from.y + u * (to.y - from.y));
        if (column >= 0 && column < m_columns && row >= 0 && row < m_rows) {
            m_cells[std::size_t(row * m_columns + column)] |= Line;
        }
    }
}

const TouchLabel *TouchLabelSpace::place(const std::vector<TouchLabel> &candidates)
{
    for (const int avoided : {Text | Line, int(Text)}) {
        for (const TouchLabel &label : candidates) {
            if (isFree(label, avoided)) {
                forCells(label, [this](std::size_t cell) {
                    m_cells[cell] |= Text;
                    return true;
                });
                return &label;
            }
        }
    }
    return nullptr;
}

bool TouchLabelSpace::isFree(const TouchLabel &label, int uses) const
{
    const TouchPosition &m = label.middle;
    return m.x - label.half.x >= 0 && m.x + label.half.x < m_columns * cellSize
        && m.y - label.half.y >= m_top && m.y + label.half.y < m_rows * cellSize
        && forCells(label, [this, uses](std::size_t cell) { return !(m_cells[cell] & uses); });
}

template <class Function>
bool TouchLabelSpace::forCells(const TouchLabel &label, Function function) const
{
    const TouchPosition &m = label.middle;
    const int lastColumn = cellOf(m.x + label.half.x);
    for (int row = cellOf(m.y - label.half.y); row <= cellOf(m.y + label.half.y); ++row) {
        for (int column = cellOf(m.x - label.half.x); column <= lastColumn; ++column) {
            if (!function(std::size_t(row * m_columns + column))) {
                return false;
            }
        }
    }
    return true;
}

} // namespace Vantrel
