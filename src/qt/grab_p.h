#ifndef VANTREL_QT_GRAB_P_H
#define VANTREL_QT_GRAB_P_H

#include <QByteArray>
#include <QImage>
#include <QString>

namespace Vantrel::QtWrapper {

class Node;

// Drawing runs code of the application, so nodes must not be kept over these.
// A null image comes with the reason in @p error, as the end of a sentence.

/**
 * The window that shows a node, without its frame. The image knows its device
 * pixel ratio: that of the screen or, when it is higher, @p leastRatio.
 */
QImage grabWindow(const Node &node, QString *error, qreal leastRatio = 1);
/** The part of the window that the node covers; what ancestors clip is not in it. */
QImage grabNode(const Node &node, QString *error);
/** Empty for a null image. */
QByteArray toPng(const QImage &image);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_GRAB_P_H
