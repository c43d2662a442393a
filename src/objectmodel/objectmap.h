#ifndef VANTREL_OBJECTMAP_H
#define VANTREL_OBJECTMAP_H

#include "objectmodel/export.h"
#include "objectmodel/objectname.h"

#include <QMap>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

namespace Vantrel {

class ObjectMapPrivate;

/**
 * Symbolic names, such as ":Dialog.OK_QPushButton", for the real names of
 * objects. A map is loaded from and saved to a text file with one entry a line.
 *
 * The map constructed last is the current one, which object names are resolved
 * through. Maps are owned by whoever makes them.
 */
class VANTREL_EXPORT ObjectMap
{
public:
    /** A line of a map that loads, but hardly as it was meant. */
    struct Problem
    {
        enum Kind {
            MalformedLine, ///< has no tab, so it is skipped
            DuplicateSymbol, ///< the symbolic name was given in an earlier line
            DuplicateRealName, ///< the real name was given in an earlier line
            InvalidName, ///< the real name is not valid
            MissingSymbol ///< a condition refers to a symbolic name that is nowhere in the map
        };

        int line; ///< counted from 1
        Kind kind;
        QString message; ///< without the line number, without a line feed
    };

    /** An empty map, which becomes the current one. @p flag is only kept; see flag(). */
    explicit ObjectMap(bool flag);
    /** The copy becomes the current map. */
    ObjectMap(const ObjectMap &other);
    /** Leaves the current map as it is. */
    ObjectMap &operator=(const ObjectMap &other);
    /** When this was the current map, there is none afterwards. */
    ~ObjectMap();

    /** The current map; null when there is none, which counts as an empty one. */
    static ObjectMap *self();

    /** The mark that the owner gave to the constructor. */
    bool flag() const;
    /** Whether there is something to save. */
    bool isModified() const;
    const QMap<ObjectName, QString> &realNames() const;
    const QMap<QString, ObjectName> &symbolicNames() const;

    /** Adds an entry in both directions; each replaces what was there. */
    void add(const ObjectName &realName, const QString &symbolicName);
    /** Replaces the whole map. Of symbols with one real name the last is found for it. */
    void setSymbolicNames(const QMap<QString, ObjectName> &symbolicNames);
    /** Removes all entries and leaves isModified() as it is. */
    void clear();

    /**
     * The real name of a symbolic @p name, which begins with ":"; an unknown one
     * is taken as the real name that follows the colon. Any other name is itself.
     */
    ObjectName objectName(const QString &name) const;
    /** The text of objectName(). */
    QString realName(const QString &name) const;
    /**
     * The symbolic name of @p realName. For an unknown one, the name as
     * fixedName() writes it, or with @p add a new symbol that enters the map.
     * A symbolic name comes back unchanged.
     */
    QString symbolicName(const QString &realName, bool add);
    /** A symbol for a multi-property @p name that is free in this map. */
    QString multiPropNameToSymbolic(const QString &name) const;
    /**
     * The text of a symbol without ":", such as "Dialog.OK_QPushButton": window,
     * container and label, then "_" and the type, from the properties of @p name.
     */
    static QString symbolFromMultiPropName(const QString &name);
    /**
     * @p name with each nested name replaced by its quoted symbolic name, which
     * enters the map when @p add is true; spelled canonically. What is nested
     * more than 64 levels deep, and what would make the text longer than 2^20
     * UTF-16 units, is quoted as it stands. Hierarchical names are unchanged.
     */
    QString fixedName(const QString &name, bool add);
    /** @p name on one line: line feed, carriage return and tab as escapes. */
    static QString printableName(const QString &name);
    static bool isMultiPropertyName(const QString &name);

    /** Masks backslash, line feed, carriage return and tab. */
    static QString escapeForSerialize(const QString &text);
    /** Undoes escapeForSerialize(); a single backslash at the end is dropped. */
    static QString unescapeFromSerialize(const QString &text);
    /** The entries of a map's text in their order, repeated ones included. */
    static std::vector<std::pair<QString, ObjectName>> parseSerializedMap(const QString &text);

    /**
     * Replaces the map by the one in a file in UTF-8.
     * @return false, with the map unchanged, when the file cannot be read.
     */
    bool loadFromFile(const QString &fileName);
    /** Adds the entries of @p text without marking the map as modified. */
    void loadFromString(const QString &text);
    /** The text of the map, sorted by symbolic name. */
    QString toString() const;
    /**
     * Writes the map, if it was modified, through a file beside @p fileName that
     * then takes its place, so a failure leaves the old file whole. (Where no
     * file can be made beside it, @p fileName is overwritten in place.)
     * @return false, after a diagnostic, when that failed; the map stays modified.
     */
    bool saveToFile(const QString &fileName);

    /** What looks wrong in the @p text of a map, in the order of the lines. */
    static std::vector<Problem> lint(const QString &text);
    /** @return false, with @p problems unchanged, when the file cannot be read. */
    static bool lintFile(const QString &fileName, std::vector<Problem> *problems);

private:
    static QString convertToOldName(const QString &name);

    friend class ObjectMapPrivate;
    const std::unique_ptr<ObjectMapPrivate> d;
};

} // namespace Vantrel

#endif // VANTREL_OBJECTMAP_H
