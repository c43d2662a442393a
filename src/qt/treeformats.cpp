#include "qt/treedump.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamWriter>

namespace Vantrel::QtWrapper {

namespace {

bool isPair(const QString &text, int index)
{
    return index + 1 < text.size() && text.at(index).isHighSurrogate()
        && text.at(index + 1).isLowSurrogate();
}

/** Whether a document may hold the code unit, which is no part of a pair. */
bool isAllowed(QChar c)
{
    const ushort code = c.unicode();
    return code == '\t' || code == '\n' || code == '\r'
        || (code >= 0x20 && !c.isSurrogate() && code != 0xFFFE && code != 0xFFFF);
}

/** Rewrites what is not allowed by @p replace, and copies the rest. */
template <class Replace>
QString cleaned(const QString &text, Replace replace)
{
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (isPair(text, i)) {
            result += text.at(i++);
            result += text.at(i);
        } else {
            result += isAllowed(text.at(i)) ? QString(text.at(i)) : replace(text.at(i));
        }
    }
    return result;
}

bool isClean(const QString &text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (isPair(text, i)) {
            ++i;
        } else if (!isAllowed(text.at(i))) {
            return false;
        }
    }
    return true;
}

QString replaced(const QString &text)
{
    const auto replace = [](QChar) { return QString(QChar(QChar::ReplacementCharacter)); };
    return isClean(text) ? text : cleaned(text, replace);
}

/** Reversible: a backslash stands before each backslash. */
QString escaped(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return cleaned(text, [](QChar c) {
        return QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    });
}

void writeProperty(QXmlStreamWriter &xml, const QString &name, const QString &value)
{
    xml.writeEmptyElement(QStringLiteral("property"));
    xml.writeAttribute(QStringLiteral("name"), replaced(name));
    const bool clean = isClean(value);
    xml.writeAttribute(QStringLiteral("value"), clean ? value : escaped(value));
    if (!clean) {
        xml.writeAttribute(QStringLiteral("escaped"), QStringLiteral("true"));
    }
}

void writeElement(QXmlStreamWriter &xml, const UiElement &element)
{
    xml.writeStartElement(QStringLiteral("element"));
    xml.writeAttribute(QStringLiteral("type"), replaced(element.type));
    xml.writeAttribute(QStringLiteral("name"), replaced(element.name));
    xml.writeAttribute(QStringLiteral("x"), QString::number(element.bounds.x));
    xml.writeAttribute(QStringLiteral("y"), QString::number(element.bounds.y));
    xml.writeAttribute(QStringLiteral("width"), QString::number(element.bounds.width));
    xml.writeAttribute(QStringLiteral("height"), QString::number(element.bounds.height));
    for (const auto &property : element.properties()) {
        writeProperty(xml, property.first, property.second);
    }
    if (!element.screenshot.isEmpty()) {
        xml.writeTextElement(QStringLiteral("screenshot"),
                             QString::fromLatin1(element.screenshot.toBase64()));
    }
    for (const auto &child : element.children()) {
        writeElement(xml, *child);
    }
    xml.writeEndElement();
}

/** The writer of Qt loses half of a pair that stands alone. */
QString jsonText(const QString &text)
{
    const auto replace = [](QChar c) {
        return QString(c.isSurrogate() ? QChar(QChar::ReplacementCharacter) : c);
    };
    return isClean(text) ? text : cleaned(text, replace);
}

QJsonObject jsonOf(const UiElement &element)
{
    QJsonObject properties;
    for (const auto &property : element.properties()) {
        properties.insert(jsonText(property.first), jsonText(property.second));
    }
    QJsonArray children;
    for (const auto &child : element.children()) {
        children.append(jsonOf(*child));
    }
    QJsonObject object{{QStringLiteral("type"), jsonText(element.type)},
                       {QStringLiteral("name"), jsonText(element.name)},
                       {QStringLiteral("x"), element.bounds.x},
                       {QStringLiteral("y"), element.bounds.y},
                       {QStringLiteral("width"), element.bounds.width},
                       {QStringLiteral("height"), element.bounds.height},
                       {QStringLiteral("properties"), properties},
                       {QStringLiteral("children"), children}};
    if (!element.screenshot.isEmpty()) {
        object.insert(QStringLiteral("screenshot"),
                      QString::fromLatin1(element.screenshot.toBase64()));
    }
    return object;
}

} // namespace

QByteArray toXml(const UiElement &element)
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("tree"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    writeElement(xml, element);
    xml.writeEndDocument();
    return document;
}

QByteArray toJson(const UiElement &element)
{
    return QJsonDocument(jsonOf(element)).toJson();
}

} // namespace Vantrel::QtWrapper
