#ifndef VANTREL_QT_DELEGATES_P_H
#define VANTREL_QT_DELEGATES_P_H

#include <QString>
#include <QStringList>

namespace Vantrel::QtWrapper {

class Node;

/** A node for human readers: its class and, when it has one, its label or else its objectName. */
QString summaryOf(const Node &node);

/** The classes at the roots of all objects of this wrapper, which delegates are made for. */
QStringList wrappedClassNames();

// Each makes the delegates of its kind, for the life of the process.
void registerGeometry();
void registerWindows();
/** Serialisation and conversion. */
void registerObjectTexts();
void registerDump();
/** The global functions that dump. */
void registerDumpFunctions();

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_DELEGATES_P_H
