#include "objectmodel/windowinteraction.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/screenvalues.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cmath>
#include <functional>

using namespace Vantrel;

namespace {

class WindowClass : public Class
{
public:
    explicit WindowClass(const char *name, const Class *superClass = nullptr) : Class(name, true)
    {
        setSuperClass(superClass);
        setNumMethods(0);
        setNumProperties(0);
    }
};

const Class *frameClass()
{
    static const Class *const c = new WindowClass("WindowTestFrame");
    return c;
}

/** A subclass, so that everything is found along the hierarchy. */
const Class *dialogClass()
{
    static const Class *const c = new WindowClass("WindowTestDialog", frameClass());
    return c;
}

/** Nobody knows how to handle it; its name must not be taken for a template. */
const Class *oddClass()
{
    static const Class *const c = new WindowClass("Odd%1%2");
    return c;
}

/** Implements what every delegate must, and writes down what it was asked. */
class PlainWindows : public WindowInteractionDelegate
{
public:
    using WindowInteractionDelegate::WindowInteractionDelegate;

    FunctionCallResult<void> closeWindow(SharedPtr<Object>) override { return note("close"); }
    FunctionCallResult<void> maximizeWindow(SharedPtr<Object>) override { return note("maximize"); }
    FunctionCallResult<void> minimizeWindow(SharedPtr<Object>) override { return note("minimize"); }
    FunctionCallResult<void> moveWindowTo(SharedPtr<Object>, int x, int y) override
    {
        return note(QStringLiteral("move %1 %2").arg(QString::number(x), QString::number(y)));
    }
    FunctionCallResult<void> resizeWindowTo(SharedPtr<Object>, int width, int height) override
    {
        return note(
            QStringLiteral("resize %1 %2").arg(QString::number(width), QString::number(height)));
    }
    FunctionCallResult<void> restoreWindow(SharedPtr<Object>) override { return note("restore"); }

    QStringList asked;
    QString failure;

protected:
    FunctionCallResult<void> note(const QString &what)
    {
        asked << what;
        return {failure};
    }
};

class AllWindows : public PlainWindows
{
public:
    using PlainWindows::PlainWindows;

    FunctionCallResult<void> setFullscreenWindow(SharedPtr<Object>) override
    {
        return note("fullscreen");
    }
    FunctionCallResult<void> setForegroundWindow(SharedPtr<Object>) override
    {
        return note("foreground");
    }
    FunctionCallResult<void> setFocusedWindow(SharedPtr<Object>) override { return note("focus"); }
    FunctionCallResult<ScreenRectangle> windowGeometry(SharedPtr<Object>) override
    {
        return {{-5, 6, 70, 80}, note("geometry").errorMessage};
    }
    FunctionCallResult<SharedPtr<Object>> focusedWindow() override
    {
        if (action) {
            action();
        }
        return {focused, note("focused").errorMessage};
    }

    SharedPtr<Object> focused;
    std::function<void()> action;
};

using Function = SharedPtr<Object> (*)(const ObjectList &);

const struct Row
{
    const char *name;
    Function function;
    QString verb;
    QString asked;
} commands[] = {
#define COMMAND(name) "_vantrel_window_" #name, _vantrel_window_##name
    {COMMAND(close), "close", "close"},
    {COMMAND(maximize), "maximize", "maximize"},
    {COMMAND(minimize), "minimize", "minimize"},
    {COMMAND(moveto), "move", "move 7 -8"},
    {COMMAND(resizeto), "resize", "resize 7 -8"},
    {COMMAND(restore), "restore", "restore"},
    {COMMAND(fullscreen_set), "set fullscreen", "fullscreen"},
    {COMMAND(foreground_set), "set foreground", "foreground"},
    {COMMAND(focus_set), "set focused", "focus"},
    {COMMAND(geometry_get), "fetch geometry for", "geometry"},
#undef COMMAND
};

class WindowFunctions : public testing::Test
{
protected:
    void SetUp() override { Inspector::self()->lastError(); }

    SharedPtr<Object> window(const Class *c)
    {
        return SharedPtr<Object>(new Object(&m_data, c, ObjectAttribute()));
    }

    static SharedPtr<Object> number(int value) { return Inspector::self()->createPrimitive(value); }

    static ObjectList arguments(const SharedPtr<Object> &window, const Row &row)
    {
        ObjectList list{window};
        if (row.asked.contains('7')) {
            list << number(7) << number(-8);
        }
        return list;
    }

    /** What a function leaves as the last error when it is called directly and as a method. */
    static void expectFailure(const QString &error, const Row &row, const ObjectList &arguments)
    {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(row.function(arguments));
        EXPECT_EQ(error, Inspector::self()->lastError());
        EXPECT_FALSE(callByName(row.name, arguments));
        EXPECT_EQ(error, Inspector::self()->lastError());
    }

    static SharedPtr<Object> callByName(const char *name, const ObjectList &arguments)
    {
        return Inspector::self()->globalClass()->methods(name).invoke({}, arguments, nullptr);
    }

private:
    int m_data = 0;
};

} // namespace

TEST_F(WindowFunctions, WorkOnAWindowOfASubclass)
{
    AllWindows windows("WindowTestFrame");
    const SharedPtr<Object> dialog = window(dialogClass());
    for (const Row &row : commands) {
        SCOPED_TRACE(row.name);
        const ObjectList list = arguments(dialog, row);
        const SharedPtr<Object> direct = row.function(list);
        const SharedPtr<Object> called = callByName(row.name, list);
        ASSERT_TRUE(direct && called) << qPrintable(Inspector::self()->lastError());
        EXPECT_EQ(QStringList({row.asked, row.asked}), windows.asked);
        windows.asked.clear();
        if (row.function != _vantrel_window_geometry_get) {
            EXPECT_EQ(Inspector::self()->voidObject(), direct);
        }
    }
    const SharedPtr<Object> geometry = _vantrel_window_geometry_get({dialog});
    const ScreenRectangle rectangle = unwrapScreenRectangle(geometry);
    EXPECT_EQ(-5, rectangle.x);
    EXPECT_EQ(80, rectangle.height);
}

TEST_F(WindowFunctions, RefuseWhatIsNoWindowAndPassOnErrors)
{
    AllWindows windows("WindowTestFrame");
    const SharedPtr<Object> gone = window(frameClass());
    gone->invalidate();
    for (const Row &row : commands) {
        const QString error = QStringLiteral("Can't %1 null object.").arg(row.verb);
        EXPECT_FALSE(row.function({}));
        EXPECT_EQ(error, Inspector::self()->lastError());
        for (const auto &none : {SharedPtr<Object>(), frameClass()->createNull(), gone}) {
            expectFailure(error, row, arguments(none, row));
        }
        expectFailure(
            QStringLiteral("Don't know how to %1 object of type %2").arg(row.verb, "Odd%1%2"), row,
            arguments(window(oddClass()), row));
    }
    EXPECT_TRUE(windows.asked.isEmpty());
    windows.failure = "The window said %1.";
    for (const Row &row : commands) {
        expectFailure(windows.failure, row, arguments(window(frameClass()), row));
    }
}

TEST_F(WindowFunctions, NameTheClassThatSupportsNoMore)
{
    PlainWindows windows("WindowTestFrame");
    const ObjectList dialog{window(dialogClass())};
    const QString end = " objects of type WindowTestDialog is not supported.";
    EXPECT_FALSE(_vantrel_window_fullscreen_set(dialog));
    EXPECT_EQ("Setting fullscreen state on" + end, Inspector::self()->lastError());
    EXPECT_FALSE(_vantrel_window_foreground_set(dialog));
    EXPECT_EQ("Setting foreground state on" + end, Inspector::self()->lastError());
    EXPECT_FALSE(_vantrel_window_focus_set(dialog));
    EXPECT_EQ("Focusing" + end, Inspector::self()->lastError());
    EXPECT_FALSE(_vantrel_window_geometry_get(dialog));
    EXPECT_EQ("Fetching window geometry for" + end, Inspector::self()->lastError());
}

TEST_F(WindowFunctions, NeedTwoNumbersForAPlace)
{
    AllWindows windows("WindowTestFrame");
    const SharedPtr<Object> frame = window(frameClass());
    const SharedPtr<Object> text = Inspector::self()->createPrimitive(QStringLiteral("12"));
    const struct
    {
        ObjectList arguments;
        const char *error;
    } rows[] = {
        {{frame}, "Can't move object: 3 arguments expected, 1 given"},
        {{frame, number(1)}, "Can't move object: 3 arguments expected, 2 given"},
        {{window(oddClass())}, "Don't know how to move object of type Odd%1%2"},
        {{frame, number(1), nullptr}, "Can't move object: argument 3 is not a number"},
        {{frame, frame, number(1)}, "Can't move object: argument 2 is not a number"},
        {{frame, Inspector::self()->createPrimitive("abc"), number(1)}, "Can't move object: argument 2 is not a number"},
        {{frame, Inspector::self()->createPrimitive(NAN), number(1)}, "Can't move object: argument 2 is not a number"},
        {{frame, number(1), Inspector::self()->createPrimitive(2147483648.0)}, "Can't move object: argument 3 is not a number"},
        {{frame, Inspector::self()->createPrimitive("-2147483649"), number(1)}, "Can't move object: argument 2 is not a number"},
    };
    for (const auto &row : rows) {
        EXPECT_FALSE(_vantrel_window_moveto(row.arguments));
        EXPECT_EQ(row.error, Inspector::self()->lastError());
    }
    EXPECT_TRUE(_vantrel_window_moveto({frame, text, number(3)}));
    EXPECT_TRUE(callByName("_vantrel_window_resizeto", {frame, number(3), text}));
    EXPECT_FALSE(callByName("_vantrel_window_moveto", {frame, number(3), Inspector::self()->createPrimitive("abc")}));
    EXPECT_EQ(QStringList({"move 12 3", "resize 3 12"}), windows.asked);
}

TEST_F(WindowFunctions, AreDescribedLikeAnyMethod)
{
    const Class *global = Inspector::self()->globalClass();
    const MethodList list = global->methods("_vantrel_window_moveto");
    ASSERT_EQ(1, list.size());
    EXPECT_EQ("void _vantrel_window_moveto(Object * object, int x, int y)", list.at(0)->toString());
    EXPECT_TRUE(list.at(0)->isStatic());
    EXPECT_FALSE(list.methodForArguments({window(frameClass()), number(1), number(2)}));
    EXPECT_EQ("ScreenRectangle _vantrel_window_geometry_get(Object * object)",
              global->methods("_vantrel_window_geometry_get").at(0)->toString());
    EXPECT_EQ(QStringList("_vantrel_window_moveto(Object * object, int x, int y): expects 3 arguments, 2 given"),
              list.explain({nullptr, number(1)}));

    testing::internal::CaptureStderr();
    EXPECT_FALSE(list.at(0)->invoke({}, {window(frameClass())}));
    const QString text = QStringLiteral("Class::invoke Global::%1: 3 arguments expected, 1 given")
                             .arg(list.at(0)->id());
    EXPECT_EQ(text + '\n', QString::fromStdString(testing::internal::GetCapturedStderr()));
    EXPECT_EQ(text, Inspector::self()->lastError());
}

TEST_F(WindowFunctions, SearchTheFocusByClassName)
{
    EXPECT_FALSE(callByName("_vantrel_window_focused", {}));
    EXPECT_EQ("No focused window found", Inspector::self()->lastError());

    AllWindows second("WindowTestB");
    AllWindows third("WindowTestC");
    AllWindows first("WindowTestA");
    first.focused = frameClass()->createNull();
    third.focused = window(frameClass());
    EXPECT_EQ(third.focused, _vantrel_window_focused({}));
    second.focused = window(frameClass());
    EXPECT_EQ(second.focused, callByName("_vantrel_window_focused", {}));
    EXPECT_EQ(2, first.asked.size());
    EXPECT_EQ(1, third.asked.size());

    first.failure = "No display";
    EXPECT_FALSE(_vantrel_window_focused({}));
    EXPECT_EQ("No display", Inspector::self()->lastError());
    EXPECT_EQ(2, second.asked.size());

    first.failure.clear();
    first.action = [&] { DelegateFactory::self()->removeDelegate(&second); };
    EXPECT_EQ(third.focused, _vantrel_window_focused({}));
    EXPECT_EQ(2, second.asked.size()) << "it left while the first one was asked";
}
