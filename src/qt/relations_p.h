#ifndef VANTREL_QT_RELATIONS_P_H
#define VANTREL_QT_RELATIONS_P_H

#include "qt/node_p.h"

#include <QHash>

class QLabel;

namespace Vantrel::QtWrapper {

/**
 * Which widgets stand beside others. Keeps what it finds out about each
 * container, so it must not be kept while the application runs.
 */
class Relations
{
public:
    /**
     * The label that describes a widget: the one that has it as its buddy, the
     * one of its row in a form, else the nearest one to the left of it or above.
     */
    Node buddyOf(const Node &node);
    /** The nearest shown widget of the same container on that side, level with this one. */
    Node leftOf(const Node &node);
    Node above(const Node &node);

private:
    struct Siblings
    {
        std::vector<QWidget *> widgets;
        std::vector<QLabel *> labels;
    };
    const Siblings &siblingsOf(const QWidget *widget);

    QHash<const QWidget *, Siblings> m_siblings;
};

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_RELATIONS_P_H
