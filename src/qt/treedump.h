#ifndef VANTREL_QT_TREEDUMP_H
#define VANTREL_QT_TREEDUMP_H

#include "objectmodel/shared.h"
#include "objectmodel/uielement.h"

#include "qt/export.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace Vantrel {

class Object;

namespace QtWrapper {

/** What goes into a dump. */
struct DumpOptions
{
    /** Levels below the root; -1 is all of them, 0 the root alone. */
    int depth = -1;
    bool withProperties = true;
    /** Whether objects that a user cannot see are left out, with what is below them. */
    bool onlyShown = false;
    /** Items of one view, header or scene at most; what is left out is counted. */
    int maxItems = 1000;
    /** Not owned; null accepts everything. */
    const DumpFilter *filter = nullptr;
};

/**
 * The tree of @p root, or of the whole application when it is null. Each
 * element has the property "realName", by which the object is found again.
 * Null, with the last error set, when @p root is no object of this wrapper.
 */
VANTREL_QT_EXPORT std::unique_ptr<UiElement> dumpTree(const SharedPtr<Object> &root,
                                                      const DumpOptions &options = {});
/** The order is that of the tree, so that two dumps can be compared line by line. UTF-8. */
VANTREL_QT_EXPORT QByteArray toXml(const UiElement &element);
VANTREL_QT_EXPORT QByteArray toJson(const UiElement &element);
/**
 * The picture of the window of @p root (null: of the active or else first
 * window) with the box and the short name of the object and each one below it
 * that is visible, as PNG. Empty, with the last error set, when there is no
 * window to show.
 */
VANTREL_QT_EXPORT QByteArray annotatedPicture(const SharedPtr<Object> &root,
                                              const DumpOptions &options = {});

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_TREEDUMP_H
