#ifndef VANTREL_TOUCHBUILDER_LABELS_P_H
#define VANTREL_TOUCHBUILDER_LABELS_P_H

#include "objectmodel/touchbuilder_p.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vantrel {

/** Where a text stands: its middle and about half of its extent. */
struct TouchLabel
{
    TouchLabel(TouchPosition place, std::size_t length);

    TouchPosition middle;
    TouchPosition half;
};

/**
 * Finds places for the texts in a picture, such that none covers another one
 * and as few as possible cover lines. Works on a grid, so that the effort does
 * not depend on how much is drawn.
 */
class TouchLabelSpace
{
public:
    /** Nothing above @p top is free. */
    TouchLabelSpace(double width, double height, double top);

    void addLine(TouchPosition from, TouchPosition to);
    /** Takes the first place that is free, best without lines; null when there is none. */
    const TouchLabel *place(const std::vector<TouchLabel> &candidates);

private:
    enum Use : std::uint8_t { Line = 1, Text = 2 };

    bool isFree(const TouchLabel &label, int uses) const;
    /** Calls @p function for each cell of @p label until it answers false. */
    template <class Function>
    bool forCells(const TouchLabel &label, Function function) const;

    int m_columns;
    int m_rows;
    double m_top;
    std::vector<std::uint8_t> m_cells;
};

} // namespace Vantrel

#endif // VANTREL_TOUCHBUILDER_LABELS_P_H
