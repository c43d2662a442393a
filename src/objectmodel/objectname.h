#ifndef VANTREL_OBJECTNAME_H
#define VANTREL_OBJECTNAME_H

#include "objectmodel/export.h"

#include <QMap>
#include <QString>

#include <memory>

namespace Vantrel {

class ObjectMapPrivate;
class PropertyPattern;

/**
 * One condition of a multi-property name without the name of the property: a
 * text and how the value of a candidate is compared with it. Copies share the
 * compiled pattern, which is made on the first match.
 */
class VANTREL_EXPORT PropertyValue
{
public:
    enum Modifiers : quint32 {
        Equals = 0, ///< written "="
        RegExp = 1, ///< written "~="
        Wildcard = 2 ///< written "?="
    };
    enum Type : quint32 {
        String = 0, ///< a quoted text
        Object = 1 ///< a nested multi-property name
    };

    /** An empty text that is compared for equality. */
    PropertyValue();
    /** @p text without quotes and escapes, or a whole nested name with its braces. */
    explicit PropertyValue(const QString &text, Modifiers mode = Equals, Type type = String);

    const QString &stringValue() const { return m_text; }
    Modifiers matchingMode() const { return m_mode; }
    Type type() const { return m_type; }
    bool isObject() const { return m_type == Object; }

    /**
     * Whether @p candidate, the value of an object's property as text or the
     * name of an object, meets this condition. Case matters. Regular expressions
     * and wildcards match when they are found anywhere in the candidate; a
     * broken one never matches, nor does one whose counts multiply to more than
     * matching can bear; that becomes the last error. Names of objects are resolved through the
     * current ObjectMap and compared as names.
     */
    bool matches(const QString &candidate) const
    {
        return m_isPlain ? candidate == m_text : matchesSpecially(candidate);
    }

    /** Compares texts and modes; the type is not looked at. */
    bool operator==(const PropertyValue &other) const;
    bool operator!=(const PropertyValue &other) const { return !(*this == other); }

    /**
     * The unanchored regular expression for a wildcard: "*" is any text, "?" any
     * character, "[...]" a set. A backslash takes "*", "?", "[" and "]"
     * literally and stands for itself elsewhere.
     */
    static QString wildcardToRegExp(const QString &wildcard);

private:
    bool matchesSpecially(const QString &candidate) const;
    bool matchesSymbol(const QString &candidate) const;

    QString m_text;
    Modifiers m_mode = Equals;
    Type m_type = String;
    /** A text that only equals itself, which is by far the usual condition. */
    bool m_isPlain = true;
    std::shared_ptr<PropertyPattern> m_pattern;
};

/**
 * The name of an object: either a multi-property name such as
 * "{type='QPushButton' text='OK'}", or any other text, a hierarchical name,
 * which has no properties.
 *
 * A name holds its text, its properties or both and makes the other when it is
 * asked for. Errors in a text do not surface before that; see errorMessage().
 */
class VANTREL_EXPORT ObjectName
{
public:
    /** The empty name, which counts as valid. */
    ObjectName();
    /** An empty @p text is an invalid name. */
    explicit ObjectName(const QString &text);
    explicit ObjectName(const QMap<QString, PropertyValue> &properties);

    /** The text; canonical when the name was made from properties or edited. */
    QString qualifiedName() const;
    /** By property name; empty for hierarchical and for invalid names. */
    QMap<QString, PropertyValue> properties() const;
    /** An empty text, compared for equality, when there is no property @p key. */
    PropertyValue property(const QString &key) const;
    /** Adds or replaces a property. The text is made anew from the properties. */
    void setProperty(const QString &key, const PropertyValue &value);
    /** The text is made anew from the properties, also when @p key was not there. */
    void removeProperty(const QString &key);

    /** Why the name is not valid; empty when it is. Edits do not clear it. */
    QString errorMessage() const;
    bool isValid() const;
    /**
     * True when there are no properties and they are known, or the text is known
     * and empty. So a hierarchical name is empty once its properties were asked for.
     */
    bool isEmpty() const;
    bool isMultiProperty() const;
    /**
     * Which of several matching objects is meant, counted from 1: the property
     * "occurrence", 1 without it, and -1 when it is no integer above 0.
     */
    int occurrenceValue() const;

    /** Same text, or multi-property names with the same names, modes and values. */
    bool operator==(const ObjectName &other) const;
    bool operator!=(const ObjectName &other) const { return !(*this == other); }

    /**
     * An order over the texts for sorted containers: first hierarchical and
     * unparsable names by their text, then multi-property names by the names,
     * modes and values of their sorted properties. So two spellings of a name
     * are one key, and no conversion changes the place of a name.
     */
    VANTREL_EXPORT friend bool operator<(const ObjectName &a, const ObjectName &b);

private:
    friend class ObjectMapPrivate;

    enum Representation : quint8 { Text = 1, Properties = 2 };
    enum class Order : quint8 { Unknown, ByText, ByProperties };

    void edited();
    void makeOrder() const;
    bool isOrderedAsCompared() const;

    mutable QString m_text;
    mutable QMap<QString, PropertyValue> m_properties;
    mutable QString m_error;
    mutable QString m_orderKey;
    mutable quint8 m_current = Text | Properties;
    mutable Order m_order = Order::Unknown;
    bool m_isAsWritten = true;
};

/**
 * Why @p name is not valid, on one line and for people: as errorMessage(), but a
 * multi-property name without its end is told what is missing and where. Empty
 * when the name is valid.
 */
VANTREL_EXPORT QString mistakeIn(const ObjectName &name);

/** True when @p text begins with "{" and ends in "}"; blanks around it count. */
VANTREL_EXPORT bool isMultiPropertyName(const QString &text);

/**
 * Parses a multi-property name. White space around it is ignored.
 * @return an empty map on failure; @p error then tells why, unless it is null.
 *         On success @p error is left alone.
 */
VANTREL_EXPORT QMap<QString, PropertyValue> parseNameByProperties(const QString &text,
                                                                  QString *error = nullptr);

/**
 * Parses the multi-property name that begins at @p index, a UTF-16 index into
 * @p text (below 0 counts as 0), and ignores what follows it.
 *
 * @p index must not be null. It is left on the closing "}" on success, and where
 * parsing stopped on failure. A text that is already in @p error is replaced,
 * except that it stays when the text ends inside the outermost name.
 */
VANTREL_EXPORT QMap<QString, PropertyValue> parseNameByProperties(const QString &text, int *index,
                                                                  QString *error);

/** The canonical text: sorted by property name, one space between properties. */
VANTREL_EXPORT QString qualifiedNameFromProperties(const QMap<QString, PropertyValue> &properties);

/** As texts, or regardless of order and spacing when both are multi-property names. */
VANTREL_EXPORT bool qualifiedNamesEqual(const QString &a, const QString &b);

/**
 * The form in which hierarchical names are used: a name read from a file, and a
 * name that is about to be split at ".". All forms are current, so it is @p name.
 */
VANTREL_EXPORT QString normalizedHierarchicalName(const QString &name);

} // namespace Vantrel

#endif // VANTREL_OBJECTNAME_H
