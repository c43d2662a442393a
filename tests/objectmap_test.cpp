#include "objectmodel/objectmap.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <ostream>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

static void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}

using namespace Vantrel;

namespace {

/** A map and a directory for its files. */
class ObjectMapFile : public testing::Test
{
protected:
    QString path(const char *name) const { return m_directory.filePath(name); }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }
    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(bytes.size(), file.write(bytes));
    }
    /** The bytes of a file that holds the entries of the map. */
    QByteArray saved()
    {
        ObjectMap copy(map);
        copy.setSymbolicNames(map.symbolicNames());
        EXPECT_TRUE(copy.saveToFile(path("saved")));
        return read(path("saved"));
    }

    ObjectMap map{false};

private:
    QTemporaryDir m_directory;
};

/** What a look-up in the order of the real names, one after the other, finds. */
QString scannedSymbol(const ObjectMap &map, const QString &realName)
{
    for (auto it = map.realNames().cbegin(); it != map.realNames().cend(); ++it) {
        if (it.key() == ObjectName(realName)) {
            return it.value();
        }
    }
    return realName;
}

} // namespace

TEST(ObjectMap, EscapesWhatWouldBreakALine)
{
    const QString escaped = "a\\tb\\nc\\rd\\\\e\\\\n";
    EXPECT_EQ(escaped, ObjectMap::escapeForSerialize("a\tb\nc\rd\\e\\n"));
    EXPECT_EQ(QString("a\tb\nc\rd\\e\\n"), ObjectMap::unescapeFromSerialize(escaped));
    EXPECT_EQ(QString("a\\qb"), ObjectMap::unescapeFromSerialize("a\\qb"));
    EXPECT_EQ(QString("x"), ObjectMap::unescapeFromSerialize("x\\"));
    EXPECT_EQ(QString("x\\\\ny"), ObjectMap::unescapeFromSerialize("x\\\\\\\\ny"));
    EXPECT_EQ(QString("a\\nb\\rc\\td\\"), ObjectMap::printableName("a\nb\rc\td\\"));
}

TEST(ObjectMap, ReadsEntriesAndLetsTheLaterLineWin)
{
    ObjectMap map(true);
    map.loadFromString("# comment\n\na\n:x\t{a='1'}\n:y\t{a = '1'}\n:z\ta\tb\n:z\tc\n #\t{}");
    EXPECT_EQ(QStringList({" #", ":x", ":y", ":z"}), map.symbolicNames().keys());
    EXPECT_EQ(QString("c"), map.realName(":z"));
    EXPECT_EQ(QString("a\tb"), map.realNames().key(":z").qualifiedName());
    EXPECT_EQ(QString(":y"), map.symbolicName("{a='1'}", false));
    EXPECT_FALSE(map.isModified());

    map.add(ObjectName("d"), ":d");
    map.loadFromString(":e\t");
    EXPECT_TRUE(map.isModified());
    EXPECT_EQ(6, map.symbolicNames().size());
}

TEST(ObjectMap, ResolvesSymbolicNamesAndTakesUnknownOnesLiterally)
{
    ObjectMap map(false);
    map.add(ObjectName("{a='1'}"), ":a");
    EXPECT_EQ(QString("missing"), map.realName(":missing"));
    EXPECT_EQ(QString("Empty string is not a valid object name."),
              map.objectName(":").errorMessage());

    map.setSymbolicNames({{":b", ObjectName("{a='1'}")}, {":c", ObjectName("{a= '1'}")}});
    EXPECT_EQ(QString("a"), map.realName(":a"));
    EXPECT_EQ(QString(":c"), map.symbolicName("{a='1'}", false));
    map.clear();
    EXPECT_EQ(QString("{a='1'}"), map.symbolicName("{a='1'}", false));
}

TEST(ObjectMap, IsCurrentFromItsConstructionToItsEnd)
{
    ObjectMap first(false);
    EXPECT_EQ(&first, ObjectMap::self());
    {
        ObjectMap second(first);
        EXPECT_EQ(&second, ObjectMap::self());
        first = second;
        EXPECT_EQ(&second, ObjectMap::self());
    }
    EXPECT_EQ(nullptr, ObjectMap::self());
}

TEST(ObjectMap, MakesSymbolsFromTheBestProperties)
{
    const std::pair<const char *, const char *> rows[] = {
        {"{window='Dialog' text='OK' type='QPushButton'}", "Dialog.OK_QPushButton"},
        {"{window='W' form='F' container='C' text='T' type='a.b.Button'}", "W.C.T_Button"},
        {"{container='' form='F' type='T'}", "F_T"},
        {"{}", "_"},
        {"{name='unnamed' toolTip='Tip' tagName='A'}", "Tip_A"},
        {"{name='qt_viewport' objectName='unnamed' type='T'}", "unnamed_T"},
        {"{name='edit' caption='' title='Title'}", "Title_"},
        {"{row='3' column='4' placeholder='P'}", "3_4_"},
        {"{row='3' className='C'}", "C_"},
        {"{column='4' row='' resourceName='R'}", "R_"},
        {"{window={type='Dialog'} container=':C' text~='O.*'}", "{type='Dialog'}.:C.O.*_"},
    };
    for (const auto &[name, symbol] : rows) {
        EXPECT_EQ(QString(symbol), ObjectMap::symbolFromMultiPropName(name)) << name;
    }
}

TEST(ObjectMap, AddsNewSymbolsOnlyWhenAsked)
{
    const char *const ok = "{window='Dialog' text='OK' type='QPushButton'}";
    ObjectMap map(false);
    EXPECT_EQ(QString("{text='OK' type='QPushButton' window='Dialog'}"),
              map.symbolicName(ok, false));
    EXPECT_EQ(QString(":main"), map.symbolicName(":main", true));
    EXPECT_FALSE(map.isModified());

    EXPECT_EQ(QString(":Dialog.OK_QPushButton"), map.symbolicName(ok, true));
    EXPECT_TRUE(map.isModified());
    for (int i = 2; i < 5; ++i) {
        const QString other = QString(ok).replace("}", QString(" id='%1'}").arg(i));
        const QString symbol = QString(":Dialog.OK_QPushButton_%1").arg(i);
        EXPECT_EQ(symbol, map.multiPropNameToSymbolic(other));
        EXPECT_EQ(symbol, map.symbolicName(other, true));
        EXPECT_EQ(symbol, map.symbolicName(other, true));
    }
    EXPECT_EQ(QString(":ab_"), map.symbolicName("{text='a\nb'}", true));
    EXPECT_EQ(QString("{text='a\nb'}"), map.realName(":ab_"));
    EXPECT_EQ(QString(":main.dialog"), map.symbolicName("main.dialog", true));
    EXPECT_EQ(6, map.symbolicNames().size());
}

TEST(ObjectMap, WritesNestedNamesAsSymbolicNames)
{
    ObjectMap map(false);
    map.add(ObjectName("{type='Dialog'}"), ":Dialog");
    EXPECT_EQ(QString("{container=':Dialog' text='OK'}"),
              map.fixedName("{text='OK' container={ type='Dialog' }}", false));
    EXPECT_EQ(QString("{a~='{b=\\'it\\\\\\'s\\'}'}"), map.fixedName("{a~={b='it\\'s'}}", false));
    EXPECT_EQ(QString("a.{b"), map.fixedName("a.{b", true));
    EXPECT_EQ(1, map.symbolicNames().size());

    const QString nestedTwice = "{container={text='Page' window={type='Dialog'}} text='X'}";
    EXPECT_EQ(QString("{container='::Dialog.Page_' text='X'}"), map.fixedName(nestedTwice, true));
    EXPECT_EQ(QString("{text='Page' window=':Dialog'}"), map.realName("::Dialog.Page_"));
    EXPECT_EQ(QString("::Dialog.Page_"),
              map.symbolicName("{window={type='Dialog'} text='Page'}", false));
}

TEST(ObjectMap, BoundsTheTextOfDeeplyNestedNames)
{
    const auto nested = [](int depth) {
        return QString("{a=").repeated(depth) + "{}" + QString('}').repeated(depth);
    };
    ObjectMap map(false);
    QString literal = "{}";
    for (int depth = 1; depth <= 16; ++depth) {
        literal = qualifiedNameFromProperties({{"a", PropertyValue(literal)}});
        ASSERT_EQ(literal, map.fixedName(nested(depth), false)) << depth;
    }
    EXPECT_LE(map.fixedName(nested(64), false).size(), 1 << 20);
    EXPECT_LE(map.fixedName(nested(20000), false).size(), (1 << 20) + 2 * 80002);
    QString wide;
    for (int i = 0; i < 1000; ++i) {
        wide += QString::number(i) + '=' + nested(18);
    }
    EXPECT_LE(map.fixedName('{' + wide + '}', false).size(), (1 << 20) + 2 * wide.size());

    map.symbolicName(nested(64), true);
    EXPECT_EQ(65, map.symbolicNames().size());
    map.symbolicName(nested(20000), true);
    EXPECT_LE(map.symbolicNames().size(), 2 * 65);
}

TEST(ObjectMap, FindsSymbolsAsAScanOfTheRealNamesDoes)
{
    const auto texts = QString("a;{a=b};{};{ };{a='1'};{a= '1'};{a='foo'};{b='2' a='1'};"
                               "{a='1' b='2'};{ab='1'};{a~='1'};{a={}}")
                           .split(';');
    std::vector<ObjectName> names(std::begin(texts), std::end(texts));
    names.emplace_back(QMap<QString, PropertyValue>{{"a b", PropertyValue("1")}});
    names.emplace_back(QMap<QString, PropertyValue>{
        {"a", PropertyValue("foo", PropertyValue::Equals, PropertyValue::Object)}});
    names.emplace_back(QString(" {"));
    names.emplace_back(QString("{}}"));
    names.back().setProperty("a", PropertyValue("1"));
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        ObjectMap map(false);
        for (int i = 0; i < 6; ++i) {
            map.add(names[random() % names.size()], ':' + QString::number(i));
        }
        for (const QString &text : texts) {
            const QString fixed = map.fixedName(text, false);
            ASSERT_EQ(scannedSymbol(map, fixed), map.symbolicName(text, false));
        }
    }
}

TEST_F(ObjectMapFile, RoundTripsHostileNamesByteForByte)
{
    const QString hostile = VANTREL_TEST_DATA "/hostile.objectmap";
    ASSERT_TRUE(map.loadFromFile(hostile));
    EXPECT_EQ(11, map.symbolicNames().size());
    EXPECT_EQ(QString("main\twindow\n\r\\"), map.realName(":a\tb\nc\rd\\e"));
    EXPECT_EQ(read(hostile), saved());

    map.clear();
    map.add(ObjectName("a"), QString(QChar(0xFEFF)) + "x");
    const QByteArray bytes = saved();
    ASSERT_TRUE(map.loadFromFile(path("saved")));
    EXPECT_EQ(bytes, saved());
    EXPECT_EQ(QString("a"),
              map.symbolicNames().value(QString(QChar(0xFEFF)) + "x").qualifiedName());
}

TEST_F(ObjectMapFile, ReplacesTheMapByAFileInUtf8)
{
    map.add(ObjectName("old"), ":old");
    EXPECT_FALSE(map.loadFromFile(path("none")));
    EXPECT_FALSE(map.loadFromFile(QFileInfo(path("none")).path()));
    EXPECT_EQ(QString("old"), map.realName(":old"));
    EXPECT_TRUE(map.isModified());

    write(path("file"), "\xEF\xBB\xBF:\xC3\xA4\ta\r\n#:b\tb\r\n:c\tc");
    EXPECT_TRUE(map.loadFromFile(path("file")));
    EXPECT_EQ(QStringList({":c", QString::fromUtf8(":\xC3\xA4")}), map.symbolicNames().keys());
    EXPECT_EQ(QString("a"), map.realName(QString::fromUtf8(":\xC3\xA4")));
    EXPECT_FALSE(map.isModified());

    write(path("utf16"), QByteArray("\xFF\xFE:\0a\0\t\0b\0", 10));
    EXPECT_TRUE(map.loadFromFile(path("utf16")));
    EXPECT_EQ(QStringList(), map.symbolicNames().keys().filter(":a"));
}

TEST_F(ObjectMapFile, IsWrittenOnlyWhenModifiedAndInPlaceOfAPipe)
{
    EXPECT_TRUE(map.saveToFile(path("none")));
    EXPECT_FALSE(QFile::exists(path("none")));
    const QByteArray pipe = path("pipe").toLocal8Bit();
    ASSERT_EQ(0, mkfifo(pipe.constData(), 0600));
    const int reader = open(pipe.constData(), O_RDWR);
    map.add(ObjectName("{b='2'  a='1'}"), ":b");
    map.add(ObjectName("a"), ":a");
    EXPECT_TRUE(map.saveToFile(path("pipe")));
    EXPECT_FALSE(map.isModified());
    char bytes[100];
    const auto size = ::read(reader, bytes, sizeof bytes);
    EXPECT_EQ(QByteArray(":a\ta\n:b\t{b='2'  a='1'}\n"), QByteArray(bytes, int(size)));
    EXPECT_FALSE(QFileInfo(path("pipe")).isFile());
    close(reader);
}

TEST_F(ObjectMapFile, KeepsTheOldFileWhenSavingFails)
{
    const auto saveTo = [this](const QString &file) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(map.saveToFile(file));
        EXPECT_EQ("ObjectMap::save() failed when opening '" + file.toStdString() + "'\n",
                  testing::internal::GetCapturedStderr());
        EXPECT_TRUE(map.isModified());
    };
    map.add(ObjectName(QString(100000, 'x')), ":x");
    saveTo(path("none/file"));
    saveTo(path("."));
    saveTo("");

    write(path("file"), "old");
    rlimit before;
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
    const rlimit small = {10000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    saveTo(path("file"));
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &before));
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(QByteArray("old"), read(path("file")));
}

TEST_F(ObjectMapFile, IsCheckedLineByLine)
{
    write(path("file"),
          "# comment\n"
          ":a\t{a='1' b='2'}\n"
          "no tab\n"
          "\n"
          ":a\t{b='2' a='1'}\n"
          ":b\t{a=b}\n"
          ":c\t\n"
          ":d\t{window=':a' x={y={z=':none'}} text~=':pattern' title=':'}\n");
    std::vector<ObjectMap::Problem> problems;
    EXPECT_FALSE(ObjectMap::lintFile(path("none"), &problems));
    ASSERT_TRUE(ObjectMap::lintFile(path("file"), &problems));
    using Problem = ObjectMap::Problem;
    const Problem expected[] = {
        {3, Problem::MalformedLine, "The line has no tab and is skipped"},
        {5, Problem::DuplicateSymbol, "The symbolic name ':a' was already given in line 2"},
        {5, Problem::DuplicateRealName,
         "The real name '{b='2' a='1'}' was already given in line 2"},
        {6, Problem::InvalidName,
         "Parse error while parsing '{a=b}': at column 4: expected either ' or { or whitespace, "
         "got b"},
        {7, Problem::InvalidName, "Empty string is not a valid object name."},
        {8, Problem::MissingSymbol, "The real name refers to ':none', which is not in the map"},
    };
    ASSERT_EQ(std::size(expected), problems.size());
    for (size_t i = 0; i < problems.size(); ++i) {
        EXPECT_EQ(expected[i].line, problems[i].line);
        EXPECT_EQ(expected[i].kind, problems[i].kind);
        EXPECT_EQ(expected[i].message, problems[i].message);
    }
}
