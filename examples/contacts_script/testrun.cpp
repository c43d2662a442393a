#include "testrun.h"

#include "objectmodel/class.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"

#include "qt/treedump.h"
#include "qt/waiting.h"

#include <QDateTime>
#include <QSaveFile>

#include <cstdio>

using namespace Vantrel;

namespace {

constexpr int timeout = 5000;

const char *const pageHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Contacts, driven by names</title>
<style>
body { font: 15px/1.45 system-ui, sans-serif; max-width: 64em; margin: 2em auto; padding: 0 1em;
       color: #222; }
h1 { font-size: 1.6em; } h2 { font-size: 1.15em; margin-top: 2em; }
pre { background: #f4f4f1; padding: .6em .9em; overflow: auto; max-height: 30em; font-size: 13px; }
figure { margin: 1em 0; } img { max-width: 100%; border: 1px solid #bbb; }
figcaption { color: #555; font-size: 90%; }
</style>
</head>
<body>
)";

bool isPicture(const QString &fileName)
{
    return fileName.endsWith(QLatin1String(".png")) || fileName.endsWith(QLatin1String(".svg"));
}

SharedPtr<Object> invoke(const SharedPtr<Object> &object, const Class *type, const char *method,
                         const ObjectList &arguments)
{
    const MethodList methods = type->methods(QLatin1String(method));
    bool ok = false;
    const SharedPtr<Object> result = methods.invoke(object, arguments, &ok);
    if (!ok) {
        const QStringList reasons(Inspector::self()->lastError());
        throw Failure((reasons + methods.explain(arguments)).join(QLatin1String("\n  ")));
    }
    return result;
}

QStringList outlineOf(const UiElement &element, int depth)
{
    QString name;
    for (const auto &property : element.properties()) {
        if (property.first == QLatin1String("realName")) {
            name = property.second;
        }
    }
    QStringList lines(QString(2 * depth, QLatin1Char(' ')) + element.type + QLatin1String("  ")
                      + name);
    for (const auto &child : element.children()) {
        lines += outlineOf(*child, depth + 1);
    }
    return lines;
}

} // namespace

TestRun::Step &TestRun::current()
{
    if (m_steps.empty()) {
        m_steps.emplace_back();
    }
    return m_steps.back();
}

void TestRun::step(const QString &title)
{
    m_steps.push_back({title, {}, {}, {}});
    std::printf("%2d. %s\n", int(m_steps.size()), qUtf8Printable(title));
    std::fflush(stdout);
}

void TestRun::say(const QString &line)
{
    current().lines << line;
    std::printf(
        "      %s\n",
        qUtf8Printable(QString(line).replace(QLatin1String("\n"), QLatin1String("\n      "))));
    std::fflush(stdout);
}

SharedPtr<Object> TestRun::object(const QString &name)
{
    const SharedPtr<Object> result = QtWrapper::waitForObject(name, timeout);
    require(!result.isNull());
    return result;
}

QString TestRun::property(const QString &name, const char *property)
{
    const SharedPtr<Object> owner = QtWrapper::waitForObjectExists(name, timeout);
    require(!owner.isNull());
    const Property *found = owner->type()->property(QLatin1String(property));
    if (!found) {
        throw Failure(QStringLiteral("%1 has no property %2")
                          .arg(owner->className(), QLatin1String(property)));
    }
    const SharedPtr<Object> value = found->get(owner);
    require(!value.isNull());
    return value->toString();
}

SharedPtr<Object> TestRun::call(const SharedPtr<Object> &object, const char *method,
                                const ObjectList &arguments)
{
    return invoke(object, object->type(), method, arguments);
}

SharedPtr<Object> TestRun::callGlobal(const char *function, const ObjectList &arguments)
{
    return invoke({}, Inspector::self()->globalClass(), function, arguments);
}

void TestRun::require(bool done)
{
    if (!done) {
        throw Failure(Inspector::self()->lastError());
    }
}

void TestRun::expect(const QString &what, const QString &actual, const QString &expected)
{
    if (actual != expected) {
        throw Failure(QStringLiteral("%1 is '%2' instead of '%3'").arg(what, actual, expected));
    }
    say(QStringLiteral("%1: %2").arg(what, actual));
}

void TestRun::waitForText(const QString &name, const char *property, const QString &expected)
{
    const auto isReached = [&] { return this->property(name, property) == expected; };
    const QString what =
        QStringLiteral("%1 of %2 to be '%3'").arg(QLatin1String(property), name, expected);
    if (!QtWrapper::waitFor(isReached, timeout, what)) {
        const QString error = Inspector::self()->lastError();
        throw Failure(QStringLiteral("%1; it is '%2'").arg(error, this->property(name, property)));
    }
    say(QStringLiteral("%1: %2").arg(name, expected));
}

void TestRun::save(const QString &fileName, const QByteArray &content)
{
    QSaveFile file(m_directory.filePath(fileName));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()
        || !file.commit()) {
        throw Failure(
            QStringLiteral("Cannot write %1: %2").arg(file.fileName(), file.errorString()));
    }
}

void TestRun::picture(const QString &fileName, const QString &caption, const QString &window)
{
    const QByteArray png = QtWrapper::annotatedPicture(object(window));
    require(!png.isEmpty());
    save(fileName, png);
    show(fileName, caption);
}

void TestRun::show(const QString &fileName, const QString &caption)
{
    current().exhibits.push_back({fileName, caption});
    say(QStringLiteral("%1: %2").arg(fileName, caption));
}

void TestRun::showTree(const UiElement &tree)
{
    current().outline = outlineOf(tree, 0);
    say(QStringLiteral("%1 objects").arg(current().outline.size() - 1));
}

QString TestRun::html() const
{
    QString page = QString::fromUtf8(pageHead)
        + QStringLiteral("<h1>Contacts, driven by names</h1>\n"
                         "<p>An ordinary application, opened as it is. Every object below was "
                         "found by its name; boxes and names are drawn from the same tree.</p>\n");
    for (const Step &step : m_steps) {
        page += QStringLiteral("<h2>%1</h2>\n").arg(step.title.toHtmlEscaped());
        if (!step.lines.isEmpty()) {
            page += QStringLiteral("<pre>%1</pre>\n")
                        .arg(step.lines.join(QLatin1Char('\n')).toHtmlEscaped());
        }
        if (!step.outline.isEmpty()) {
            page += QStringLiteral("<details open><summary>The objects and their names</summary>"
                                   "<pre>%1</pre></details>\n")
                        .arg(step.outline.join(QLatin1Char('\n')).toHtmlEscaped());
        }
        for (const Exhibit &exhibit : step.exhibits) {
            const QString file = exhibit.fileName.toHtmlEscaped();
            const QString caption = exhibit.caption.toHtmlEscaped();
            page += isPicture(exhibit.fileName)
                ? QStringLiteral("<figure><a href=\"%1\"><img src=\"%1\" alt=\"%2\"></a>"
                                 "<figcaption>%2</figcaption></figure>\n")
                      .arg(file, caption)
                : QStringLiteral("<p><a href=\"%1\">%1</a>: %2</p>\n").arg(file, caption);
        }
    }
    return page + QStringLiteral("</body>\n</html>\n");
}

void TestRun::finish()
{
    save(QStringLiteral("index.html"), html().toUtf8());
}
