#include "qt/treedump.h"

#include "qt/dump_p.h"
#include "qt/geometry_p.h"
#include "qt/grab_p.h"
#include "qt/handles_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFontMetricsF>
#include <QGraphicsObject>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

#include <algorithm>
#include <numeric>

namespace Vantrel::QtWrapper {

namespace {

// Pixels of the window, not of the picture.
constexpr qreal fontHeight = 8;
constexpr qreal labelPadding = 2;
/** The picture has at least two pixels for one of the window, so that small print can be read. */
constexpr qreal leastRatio = 2;
constexpr int maximumLabel = 22;

/** What is marked, and in which order: later ones are drawn on top. */
enum class Kind { Container, Item, GraphicsItem, MenuItem, Text, Control };

struct Box
{
    QRectF rect;
    QString label;
    Kind kind;
    /** The label says what the object shows anyway. */
    bool repeatsText;
};

QColor colorOf(Kind kind)
{
    switch (kind) {
    case Kind::Container:
        return QColor(0x6b, 0x72, 0x80);
    case Kind::Item:
        return QColor(0xb4, 0x53, 0x09);
    case Kind::GraphicsItem:
        return QColor(0x15, 0x80, 0x3d);
    case Kind::MenuItem:
        return QColor(0x7e, 0x22, 0xce);
    case Kind::Text:
        return QColor(0x0f, 0x76, 0x6e);
    case Kind::Control:
        break;
    }
    return QColor(0x1d, 0x4e, 0xd8);
}

template <class... Types>
bool isAny(const QObject *object)
{
    return (qobject_cast<const Types *>(object) || ...);
}

Kind kindOf(const Node &node)
{
    switch (node.kind()) {
    case Node::Kind::ModelItem:
    case Node::Kind::HeaderSection:
    case Node::Kind::Tab:
        return Kind::Item;
    case Node::Kind::GraphicsItem:
        return Kind::GraphicsItem;
    default:
        break;
    }
    const QObject *object = node.object();
    if (isAny<QAction, QMenu, QMenuBar>(object)) {
        return Kind::MenuItem;
    }
    if (isAny<QGraphicsObject>(object)) {
        return Kind::GraphicsItem;
    }
    if (isAny<QLabel>(object)) {
        return Kind::Text;
    }
    const bool isControl = isAny<QAbstractButton, QAbstractSlider, QAbstractSpinBox, QComboBox,
                                 QLineEdit, QTextEdit, QPlainTextEdit>(object);
    return isControl ? Kind::Control : Kind::Container;
}

/** The name that an application gave to an object; Qt names its own parts too. */
QString givenName(const Node &node)
{
    const QString name = objectNameOf(node);
    return name.startsWith(QLatin1String("qt_")) ? QString() : name;
}

/** The name that tells most in little room: objectName, else the text, else the class. */
Box boxOf(const Node &node, const QRectF &rect)
{
    const QString name = givenName(node);
    const QString text = name.isEmpty() ? labelOf(node).simplified() : QString();
    QString label = text.isEmpty() ? name : QLatin1Char('"') + text + QLatin1Char('"');
    label = label.isEmpty() ? typeName(node) : label;
    if (label.size() > maximumLabel) {
        label = label.left(maximumLabel - 1) + QChar(0x2026);
    }
    return {rect, label, kindOf(node), !text.isEmpty()};
}

std::vector<Box> boxesOf(const ObjectList &objects, const QWindow *window)
{
    const QPoint origin = window->mapToGlobal(QPoint(0, 0));
    std::vector<Box> boxes;
    for (const SharedPtr<Object> &object : objects) {
        const Node node = nodeOf(object);
        const QRect bounds = node && windowOf(node) == window ? visibleBoundsOf(node) : QRect();
        if (!bounds.isEmpty()) {
            boxes.push_back(boxOf(node, bounds.translated(-origin)));
        }
    }
    return boxes;
}

/** Finds room for labels, where they hide neither each other nor more than they must. */
class Labels
{
public:
    Labels(const QRectF &area, const std::vector<Box> &boxes) : m_area(area), m_boxes(boxes) {}

    /** Null when there is no place for it. */
    QRectF place(const Box &box, const QSizeF &size)
    {
        QRectF best;
        qreal leastCost = 0;
        for (const QPointF &corner : candidates(box, size)) {
            const QRectF rect = moved(QRectF(corner, size));
            const qreal cost = isTaken(rect) ? -1 : costOf(rect, box);
            if (cost >= 0 && (best.isNull() || cost < leastCost)) {
                best = rect;
                leastCost = cost;
            }
        }
        if (best.isNull() || (box.repeatsText && leastCost > 0)) {
            return QRectF();
        }
        m_taken.push_back(best);
        return best;
    }

private:
    /** In the order in which they are liked. */
    static std::vector<QPointF> candidates(const Box &box, const QSizeF &size)
    {
        return box.kind == Kind::Container ? candidatesInside(box.rect, size)
                                           : candidatesAround(box.rect, size);
    }

    static std::vector<QPointF> candidatesAround(const QRectF &box, const QSizeF &size)
    {
        const qreal right = box.right() - size.width();
        const qreal middle = box.center().x() - size.width() / 2;
        const qreal above = box.top() - size.height();
        const qreal inBottom = box.bottom() - size.height();
        const qreal beside = box.center().y() - size.height() / 2;
        return {{box.left(), above},
                {right, above},
                {box.left(), box.top()},
                {right, box.top()},
                {middle, above},
                {box.right(), beside},
                {box.left() - size.width(), beside},
                {box.left(), box.bottom()},
                {right, box.bottom()},
                {box.left(), inBottom},
                {right, inBottom},
                {middle, box.bottom()},
                {middle, box.top()},
                {middle, inBottom}};
    }

    /** Along the edges, from the right, as contents begin at the left. */
    static std::vector<QPointF> candidatesInside(const QRectF &box, const QSizeF &size)
    {
        constexpr int numSteps = 12;
        const qreal width = std::max<qreal>(box.width() - size.width(), 0);
        const qreal height = std::max<qreal>(box.height() - size.height(), 0);
        std::vector<QPointF> result;
        for (int i = 0; i <= numSteps; ++i) {
            const qreal x = box.left() + width * (1 - qreal(i) / numSteps);
            result.insert(result.end(), {{x, box.top()}, {x, box.top() + height}});
        }
        for (int i = 1; i < numSteps; ++i) {
            const qreal y = box.top() + height * i / numSteps;
            result.insert(result.end(), {{box.left() + width, y}, {box.left(), y}});
        }
        return result;
    }

    /** Into the picture. */
    QRectF moved(QRectF rect) const
    {
        rect.moveRight(std::min(rect.right(), m_area.right()));
        rect.moveBottom(std::min(rect.bottom(), m_area.bottom()));
        rect.moveLeft(std::max(rect.left(), m_area.left()));
        rect.moveTop(std::max(rect.top(), m_area.top()));
        return rect;
    }

    bool isTaken(const QRectF &rect) const
    {
        return std::any_of(m_taken.begin(), m_taken.end(),
                           [&rect](const QRectF &taken) { return taken.intersects(rect); });
    }

    /** How much it hides of what is no container, most of all of its own box. */
    qreal costOf(const QRectF &rect, const Box &own) const
    {
        const auto hidden = [&rect](const Box &box) {
            const QRectF part = box.rect & rect;
            return box.kind == Kind::Container ? 0 : part.width() * part.height();
        };
        return std::accumulate(m_boxes.begin(), m_boxes.end(), hidden(own),
                               [&hidden](qreal sum, const Box &box) { return sum + hidden(box); });
    }

    const QRectF m_area;
    const std::vector<Box> &m_boxes;
    std::vector<QRectF> m_taken;
};

QFont labelFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(int(fontHeight));
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

void drawBoxes(QPainter &painter, const std::vector<Box> &boxes, qreal ratio)
{
    for (const Box &box : boxes) {
        // One pixel of the picture, inside of the box.
        painter.setPen(QPen(colorOf(box.kind), 1 / ratio * 1.5));
        const qreal inset = 0.75 / ratio;
        painter.drawRect(box.rect.adjusted(inset, inset, -inset, -inset));
    }
}

void drawLabel(QPainter &painter, const QRectF &place, const Box &box)
{
    QColor background = colorOf(box.kind);
    background.setAlpha(225);
    painter.fillRect(place, background);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, box.label);
}

void annotate(QImage *image, std::vector<Box> boxes)
{
    std::stable_sort(boxes.begin(), boxes.end(),
                     [](const Box &a, const Box &b) { return a.kind < b.kind; });
    const qreal ratio = image->devicePixelRatio();
    QPainter painter(image);
    painter.setFont(labelFont());
    const QFontMetricsF metrics(painter.font(), image);
    drawBoxes(painter, boxes, ratio);
    Labels labels(QRectF(QPointF(0, 0), QSizeF(image->size()) / ratio), boxes);
    // Those on top find their places first.
    for (auto box = boxes.rbegin(); box != boxes.rend(); ++box) {
        const QSizeF size(metrics.horizontalAdvance(box->label) + 2 * labelPadding,
                          metrics.height());
        const QRectF place = labels.place(*box, size);
        if (!place.isNull()) {
            drawLabel(painter, place, *box);
        }
    }
}

/** The active window, or else the first one that is shown. */
Node firstWindow()
{
    if (QWidget *active = QApplication::activeWindow()) {
        return Node(active);
    }
    if (QWindow *focused = QGuiApplication::focusWindow()) {
        return Node(focused);
    }
    for (const Node &node : topLevelNodes()) {
        if (windowOf(node) && isShown(node)) {
            return node;
        }
    }
    return Node();
}

QByteArray fail(const QString &reason)
{
    Inspector::self()->setError(QStringLiteral("Can't take a picture: ") + reason);
    return QByteArray();
}

} // namespace

QByteArray annotatedPicture(const SharedPtr<Object> &root, const DumpOptions &options)
{
    const Node window = root ? nodeOf(root) : firstWindow();
    const SharedPtr<Object> shown = window ? handleOf(window) : nullptr;
    if (!shown) {
        return fail(
            root ? QStringLiteral("the object no longer exists or is none of the application")
                 : QStringLiteral("the application shows no window"));
    }
    QString error;
    QImage image = grabWindow(window, &error, leastRatio);
    if (image.isNull()) {
        return fail(error);
    }
    DumpOptions shownOnly = options;
    shownOnly.onlyShown = true;
    ObjectList objects;
    if (!listObjects(shown, shownOnly, &objects)) {
        return QByteArray();
    }
    // Drawing may have ended the window.
    const Node node = nodeOf(shown);
    const QWindow *place = node ? windowOf(node) : nullptr;
    if (place) {
        annotate(&image, boxesOf(objects, place));
    }
    return toPng(image);
}

} // namespace Vantrel::QtWrapper
