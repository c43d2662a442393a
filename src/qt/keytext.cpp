#include "qt/keytext_p.h"

#include <QHash>
#include <QMetaEnum>
#include <QVector>

#include <optional>

namespace Vantrel::QtWrapper {

namespace {

struct NamedKey
{
    const char *name;
    int key;
};

/** Names that keyboards and people use beside those of the enum. */
constexpr NamedKey otherNames[] = {
    {"Del", Qt::Key_Delete},   {"Esc", Qt::Key_Escape},      {"Ins", Qt::Key_Insert},
    {"PgUp", Qt::Key_PageUp},  {"PgDown", Qt::Key_PageDown}, {"PgDn", Qt::Key_PageDown},
    {"Ctrl", Qt::Key_Control}, {"BackTab", Qt::Key_Backtab},
};

struct NamedModifier
{
    const char *name;
    Qt::KeyboardModifier modifier;
};

constexpr NamedModifier modifierNames[] = {
    {"ctrl", Qt::ControlModifier}, {"control", Qt::ControlModifier}, {"shift", Qt::ShiftModifier},
    {"alt", Qt::AltModifier},      {"meta", Qt::MetaModifier},       {"keypad", Qt::KeypadModifier},
};

QHash<QString, int> makeKeyTable()
{
    QHash<QString, int> table;
    const QMetaEnum keys = QMetaEnum::fromType<Qt::Key>();
    for (int i = 0; i < keys.keyCount(); ++i) {
        const QString name = QString::fromLatin1(keys.key(i)).mid(int(qstrlen("Key_"))).toLower();
        table.insert(name, keys.value(i));
    }
    table.remove(QStringLiteral("unknown"));
    for (const NamedKey &other : otherNames) {
        table.insert(QString::fromLatin1(other.name).toLower(), other.key);
    }
    return table;
}

int keyOfName(const QString &name)
{
    static const QHash<QString, int> table = makeKeyTable();
    return table.value(name.toLower(), 0);
}

Qt::KeyboardModifier modifierOfName(const QString &name)
{
    for (const NamedModifier &named : modifierNames) {
        if (name.compare(QLatin1String(named.name), Qt::CaseInsensitive) == 0) {
            return named.modifier;
        }
    }
    return Qt::NoModifier;
}

/** The key that enters a character; its code is that of the capital letter. */
KeyInput keyOfCharacter(uint character)
{
    const QString text = QString::fromUcs4(&character, 1);
    if (character == '\n' || character == '\r') {
        return {Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r")};
    }
    if (character == '\t') {
        return {Qt::Key_Tab, Qt::NoModifier, text};
    }
    const bool isCapital = QChar::isUpper(character) && QChar::toLower(character) != character;
    return {int(QChar::toUpper(character)), isCapital ? Qt::ShiftModifier : Qt::NoModifier, text};
}

/** What a key enters that has a name. */
QString textOfKey(int key)
{
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("\r");
    case Qt::Key_Tab:
        return QStringLiteral("\t");
    case Qt::Key_Backspace:
        return QStringLiteral("\b");
    case Qt::Key_Escape:
        return QStringLiteral("\x1b");
    case Qt::Key_Delete:
        return QStringLiteral("\x7f");
    default:
        return key < Qt::Key_Escape ? QString(QChar(key)).toLower() : QString();
    }
}

QString textWithModifiers(const QString &text, int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & (Qt::AltModifier | Qt::MetaModifier)) {
        return QString();
    }
    if (modifiers & Qt::ControlModifier) {
        // As terminals do it: Ctrl+A is 1.
        return key >= Qt::Key_A && key <= Qt::Key_Z ? QString(QChar(key - Qt::Key_A + 1))
                                                    : QString();
    }
    return modifiers & Qt::ShiftModifier && text.size() == 1 && text[0].isLetter() ? text.toUpper()
                                                                                   : text;
}

/** The key of a part such as "Return", "Ctrl+A" or "Ctrl++". */
std::optional<KeyInput> keyOfPart(QString part)
{
    KeyInput result;
    int plus = part.indexOf(QLatin1Char('+'));
    while (plus > 0 && plus < part.size() - 1) {
        const Qt::KeyboardModifier modifier = modifierOfName(part.left(plus).trimmed());
        if (modifier == Qt::NoModifier) {
            return std::nullopt;
        }
        result.modifiers |= modifier;
        part = part.mid(plus + 1);
        plus = part.indexOf(QLatin1Char('+'));
    }
    part = part.trimmed();
    const QVector<uint> characters = part.toUcs4();
    if (characters.size() == 1) {
        const KeyInput plain = keyOfCharacter(characters.constFirst());
        // "Ctrl+S" is written with a capital letter but without a shift.
        result.modifiers |= result.modifiers ? Qt::NoModifier : plain.modifiers;
        result.key = plain.key;
        result.text = plain.modifiers & ~result.modifiers ? plain.text.toLower() : plain.text;
    } else {
        result.key = keyOfName(part);
        result.text = textOfKey(result.key);
    }
    result.text = textWithModifiers(result.text, result.key, result.modifiers);
    return result.key ? std::make_optional(result) : std::nullopt;
}

QString unknownKey(const QString &part, int position)
{
    return QStringLiteral("unknown key '%1' at position %2").arg(part, QString::number(position));
}

/** Reads a text from its start to its end. */
class KeyParser
{
public:
    explicit KeyParser(const QString &text) : m_text(text) {}

    std::vector<KeyInput> parse(QString *error);

private:
    QString readPart();
    void readCharacter();

    const QString m_text;
    int m_position = 0;
    std::vector<KeyInput> m_keys;
};

std::vector<KeyInput> KeyParser::parse(QString *error)
{
    QString failure;
    while (failure.isEmpty() && m_position < m_text.size()) {
        if (m_text[m_position] == QLatin1Char('<')) {
            failure = readPart();
        } else {
            readCharacter();
        }
    }
    *error = failure;
    return failure.isEmpty() ? m_keys : std::vector<KeyInput>();
}

QString KeyParser::readPart()
{
    if (m_text.midRef(m_position, 2) == QLatin1String("<<")) {
        m_keys.push_back(keyOfCharacter('<'));
        m_position += 2;
        return QString();
    }
    // A bracket that is itself the key, as in "<Ctrl+>>".
    int end = m_text.indexOf(QLatin1Char('>'), m_position);
    if (end > 0 && m_text.midRef(end - 1, 3) == QLatin1String("+>>")) {
        ++end;
    }
    if (end < 0) {
        return QStringLiteral("'<' at position %1 has no '>'; write '<<' for the character")
            .arg(m_position);
    }
    const QString part = m_text.mid(m_position + 1, end - m_position - 1);
    const std::optional<KeyInput> key = keyOfPart(part);
    if (!key) {
        return unknownKey(part, m_position);
    }
    m_keys.push_back(*key);
    m_position = end + 1;
    return QString();
}

void KeyParser::readCharacter()
{
    const QChar first = m_text[m_position++];
    if (first.isHighSurrogate() && m_position < m_text.size()
        && m_text[m_position].isLowSurrogate()) {
        m_keys.push_back(keyOfCharacter(QChar::surrogateToUcs4(first, m_text[m_position++])));
    } else if (first == QLatin1Char('\r') && m_position < m_text.size()
               && m_text[m_position] == QLatin1Char('\n')) {
        // One end of a line, which is entered by one key.
    } else {
        m_keys.push_back(keyOfCharacter(first.unicode()));
    }
}

} // namespace

std::vector<KeyInput> keysOfText(const QString &text, QString *error)
{
    return KeyParser(text).parse(error);
}

std::vector<KeyInput> keysOfSequence(const QString &sequence, QString *error)
{
    std::vector<KeyInput> keys;
    // A comma may be a key, too: "Ctrl+,".
    const QStringList parts = sequence.split(QStringLiteral(", "));
    for (const QString &part : parts) {
        const std::optional<KeyInput> key = keyOfPart(part);
        if (!key) {
            *error = unknownKey(part, sequence.indexOf(part));
            return {};
        }
        keys.push_back(*key);
    }
    return keys;
}

} // namespace Vantrel::QtWrapper
