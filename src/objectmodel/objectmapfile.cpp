#include "objectmodel/objectmapfile_p.h"

#include "objectmodel/objectmap.h"
#include "objectmodel/objectnameparser_p.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <algorithm>

namespace Vantrel {

namespace {

const QChar byteOrderMark(0xFEFF);

QString unescaped(QStringView text)
{
    const qsizetype first = text.indexOf(QLatin1Char('\\'));
    if (first == -1) {
        return text.toString();
    }
    QString result = text.left(first).toString();
    bool isPending = false;
    for (const QChar c : text.mid(first)) {
        if (!isPending && c == QLatin1Char('\\')) {
            isPending = true;
            continue;
        }
        const bool isEscape = isPending;
        isPending = false;
        if (!isEscape) {
            result += c;
        } else if (c == QLatin1Char('\\')) {
            result += c;
        } else if (c == QLatin1Char('n')) {
            result += QLatin1Char('\n');
        } else if (c == QLatin1Char('r')) {
            result += QLatin1Char('\r');
        } else if (c == QLatin1Char('t')) {
            result += QLatin1Char('\t');
        } else {
            result += QLatin1Char('\\');
            result += c;
        }
    }
    return result;
}

} // namespace

bool ObjectMapReader::nextLine()
{
    // The part after the last line feed counts as a line as well.
    while (m_next <= m_text.size()) {
        const int begin = m_next;
        const int lineFeed = m_text.indexOf(QLatin1Char('\n'), begin);
        const int end = lineFeed == -1 ? m_text.size() : lineFeed;
        m_next = end + 1;
        ++m_lineNumber;
        m_line = QStringView(m_text).mid(begin, end - begin);
        if (!m_line.isEmpty() && m_line.first() != QLatin1Char('#')) {
            m_tab = m_line.indexOf(QLatin1Char('\t'));
            return true;
        }
    }
    return false;
}

QString ObjectMapReader::symbolicName() const
{
    return unescaped(m_line.left(m_tab));
}

QString ObjectMapReader::realName() const
{
    const QString name = unescaped(m_line.mid(m_tab + 1));
    return isMultiPropertyName(name) ? name : normalizedHierarchicalName(name);
}

bool readObjectMapFile(const QString &fileName, QString *text)
{
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return false;
    }
    // The form with a length, because the other one stops at a zero byte.
    *text = QString::fromUtf8(bytes.constData(), bytes.size());
    return true;
}

namespace {

// A write that was cut short is no error to the file, which would commit it.

bool replaceFile(const QString &fileName, const QByteArray &bytes)
{
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true);
    return file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(bytes) == bytes.size()
        && file.commit();
}

bool writeInPlace(const QString &fileName, const QByteArray &bytes)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(bytes) == bytes.size()
        && file.flush();
}

} // namespace

bool writeObjectMapFile(const QString &fileName, const QString &text)
{
    if (fileName.isEmpty()) {
        return false;
    }
    // Reading drops one mark, which must not be part of the first symbolic name.
    const bool needsMark = text.startsWith(byteOrderMark);
    const QByteArray bytes = needsMark ? (byteOrderMark + text).toUtf8() : text.toUtf8();
    // A device or a pipe is written to; a regular file must not take its place.
    const QFileInfo target(fileName);
    const bool isSpecial = target.exists() && !target.isFile();
    return isSpecial ? writeInPlace(fileName, bytes) : replaceFile(fileName, bytes);
}

QString ObjectMap::escapeForSerialize(const QString &text)
{
    QString result = text;
    result.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    result.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    result.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    result.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    return result;
}

QString ObjectMap::unescapeFromSerialize(const QString &text)
{
    return unescaped(text);
}

std::vector<std::pair<QString, ObjectName>> ObjectMap::parseSerializedMap(const QString &text)
{
    std::vector<std::pair<QString, ObjectName>> entries;
    ObjectMapReader reader(text);
    while (reader.nextLine()) {
        if (reader.isEntry()) {
            entries.emplace_back(reader.symbolicName(), ObjectName(reader.realName()));
        }
    }
    return entries;
}

namespace {

/** Collects the values, at any level of a name, that are resolved as symbolic names. */
class SymbolCollector : public NameVisitor
{
public:
    void visitText(int, QStringView, PropertyValue::Modifiers mode, QStringView value) override
    {
        if (mode == PropertyValue::Equals && value.size() > 1
            && value.first() == QLatin1Char(':')) {
            symbols.push_back(value.toString());
        }
    }
    void visitNested(QStringView, PropertyValue::Modifiers, QStringView) override {}

    std::vector<QString> symbols;
};

class Linter
{
public:
    explicit Linter(const QString &text) : m_text(text) {}

    std::vector<ObjectMap::Problem> run();

private:
    void checkEntry(const QString &symbolicName, const ObjectName &realName);
    void checkReferences(const QString &realName);
    void report(ObjectMap::Problem::Kind kind, const QString &message);

    const QString &m_text;
    int m_line = 0;
    QHash<QString, int> m_lineOfSymbol;
    QMap<ObjectName, int> m_lineOfRealName;
    std::vector<ObjectMap::Problem> m_problems;
};

std::vector<ObjectMap::Problem> Linter::run()
{
    std::vector<std::pair<int, QString>> realNames;
    ObjectMapReader reader(m_text);
    while (reader.nextLine()) {
        m_line = reader.lineNumber();
        if (reader.isEntry()) {
            realNames.emplace_back(m_line, reader.realName());
            checkEntry(reader.symbolicName(), ObjectName(realNames.back().second));
        } else {
            report(ObjectMap::Problem::MalformedLine,
                   QStringLiteral("The line has no tab and is skipped"));
        }
    }
    for (const auto &[line, realName] : realNames) {
        m_line = line;
        checkReferences(realName);
    }
    std::stable_sort(m_problems.begin(), m_problems.end(),
                     [](const auto &a, const auto &b) { return a.line < b.line; });
    return m_problems;
}

void Linter::checkEntry(const QString &symbolicName, const ObjectName &realName)
{
    const auto alreadyGiven = [](const char *what, const QString &name, int line) {
        return QStringLiteral("The %1 name '%2' was already given in line %3")
            .arg(QLatin1String(what), ObjectMap::printableName(name), QString::number(line));
    };
    int &lineOfSymbol = m_lineOfSymbol[symbolicName];
    if (lineOfSymbol != 0) {
        report(ObjectMap::Problem::DuplicateSymbol,
               alreadyGiven("symbolic", symbolicName, lineOfSymbol));
    } else {
        lineOfSymbol = m_line;
    }
    int &lineOfRealName = m_lineOfRealName[realName];
    if (lineOfRealName != 0) {
        report(ObjectMap::Problem::DuplicateRealName,
               alreadyGiven("real", realName.qualifiedName(), lineOfRealName));
    } else {
        lineOfRealName = m_line;
    }
    if (!realName.isValid()) {
        report(ObjectMap::Problem::InvalidName, ObjectMap::printableName(mistakeIn(realName)));
    }
}

void Linter::checkReferences(const QString &realName)
{
    if (!isMultiPropertyName(realName)) {
        return;
    }
    int index = 0;
    SymbolCollector collector;
    parseName(realName, &index, nullptr, &collector);
    for (const QString &symbol : collector.symbols) {
        if (!m_lineOfSymbol.contains(symbol)) {
            report(ObjectMap::Problem::MissingSymbol,
                   QStringLiteral("The real name refers to '%1', which is not in the map")
                       .arg(ObjectMap::printableName(symbol)));
        }
    }
}

void Linter::report(ObjectMap::Problem::Kind kind, const QString &message)
{
    m_problems.push_back({m_line, kind, message});
}

} // namespace

std::vector<ObjectMap::Problem> ObjectMap::lint(const QString &text)
{
    return Linter(text).run();
}

bool ObjectMap::lintFile(const QString &fileName, std::vector<Problem> *problems)
{
    QString text;
    if (!readObjectMapFile(fileName, &text)) {
        return false;
    }
    *problems = lint(text);
    return true;
}

} // namespace Vantrel
