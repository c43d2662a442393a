#ifndef VANTREL_QT_PROPERTYTEXTS_P_H
#define VANTREL_QT_PROPERTYTEXTS_P_H

#include "objectmodel/shared.h"

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace Vantrel {

class Object;

namespace QtWrapper {

/** What the properties of an object were when they were read, by the code of the application. */
struct PropertyTexts
{
    /** Names and values, sorted by name; those whose type has no text are left out. */
    std::vector<std::pair<QString, QString>> values;
    /** Properties whose getter threw an exception. */
    QStringList unreadable;
    /** A getter destroyed the object; the rest could not be read. */
    bool isIncomplete = false;
};

/**
 * Every property that can be read, static and dynamic, and the names "text",
 * "visible" and "enabled" as they count in object names. Empty, and incomplete,
 * for a handle of nothing.
 */
PropertyTexts propertyTexts(const SharedPtr<Object> &object);

/**
 * While one exists, what is known of a class is kept for its other objects. Not
 * for longer, as an application may take classes away with their libraries.
 */
class PropertyTables
{
public:
    PropertyTables();
    ~PropertyTables();

private:
    Q_DISABLE_COPY(PropertyTables)
};

} // namespace QtWrapper
} // namespace Vantrel

#endif // VANTREL_QT_PROPERTYTEXTS_P_H
