// A toolkit of three widgets makes itself known to the object model, and a
// script, here a few lines of C++, works with it by names alone: it finds
// objects, calls methods, reads and writes properties, hears of events, controls
// the window, and is told why some of that is refused.

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/delegates.h"
#include "objectmodel/eventhandlers.h"
#include "objectmodel/globalfunctions.h"
#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/wrap.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

using namespace Vantrel;

namespace {

// The toolkit. Nothing in it knows of the object model.

class Widget
{
public:
    enum Visibility { Hidden, Shown, Minimized };

    /** Hears of every change of a size. */
    static std::function<void(Widget *)> resized;

    explicit Widget(const QString &name) : m_name(name) {}
    virtual ~Widget() = default;

    QString name() const { return m_name; }
    Visibility visibility() const { return m_visibility; }
    void setVisibility(Visibility visibility) { m_visibility = visibility; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    void resize(int width, int height)
    {
        m_width = width;
        m_height = height;
        if (resized) {
            resized(this);
        }
    }
    void resize(double factor)
    {
        resize(static_cast<int>(m_width * factor), static_cast<int>(m_height * factor));
    }

private:
    QString m_name;
    Visibility m_visibility = Shown;
    int m_width = 200;
    int m_height = 100;
};

std::function<void(Widget *)> Widget::resized;

class Slider : public Widget
{
public:
    using Widget::Widget;
    double value() const { return m_value; }
    void setValue(double value)
    {
        if (value < 0.0 || value > 100.0) {
            throw std::out_of_range("the value must be between 0 and 100");
        }
        m_value = value;
    }

private:
    double m_value = 0.0;
};

class Window : public Widget
{
public:
    using Widget::Widget;
    template <class W>
    W *add(const QString &name)
    {
        auto widget = std::make_unique<W>(name);
        W *added = widget.get();
        m_children.push_back(std::move(widget));
        return added;
    }
    int numChildren() const { return static_cast<int>(m_children.size()); }
    Widget *childAt(int index) const
    {
        return index >= 0 && index < numChildren() ? m_children[index].get() : nullptr;
    }

private:
    std::vector<std::unique_ptr<Widget>> m_children;
};

// What makes it known: one declaration per class, the report of events, and
// delegates that tell where the objects are and what windows can do.

void registerToolkit()
{
    auto *nameSpace = new Namespace(Inspector::self()->globalNamespace(), QStringLiteral("Demo"));
    ClassBuilder<Widget>("Widget", nameSpace)
        .method("resize", qOverload<int, int>(&Widget::resize), {"width", "height"})
        .method("resize", qOverload<double>(&Widget::resize), {"factor"})
        .property("name", &Widget::name)
        .property("width", &Widget::width)
        .property("height", &Widget::height)
        .property("visibility", &Widget::visibility, &Widget::setVisibility)
        .enumeration<Widget::Visibility>("Visibility",
                                         {{"Hidden", Widget::Hidden},
                                          {"Shown", Widget::Shown},
                                          {"Minimized", Widget::Minimized}})
        .event("resized", {argument<int>("width"), argument<int>("height")})
        .add();
    ClassBuilder<Slider>("Slider", nameSpace)
        .superClass<Widget>()
        .method("moveTo", &Slider::setValue, {"value"})
        .property("value", &Slider::value, &Slider::setValue)
        .add();
    ClassBuilder<Window>("Window", nameSpace)
        .superClass<Widget>()
        .method("childAt", &Window::childAt, {"index"})
        .property("numChildren", &Window::numChildren)
        .staticMethod("toolkitName", [] { return QStringLiteral("Demo toolkit"); })
        .add();
    addFunction("area", [](const Widget &widget) { return widget.width() * widget.height(); },
                {"widget"});
    Widget::resized = [](Widget *widget) {
        Inspector::self()->dispatchEvent(wrap(widget), QStringLiteral("resized"),
                                         {wrap(widget->width()), wrap(widget->height())});
    };
}

class Hierarchy : public ObjectHierarchyDelegate
{
public:
    explicit Hierarchy(Window *window)
        : ObjectHierarchyDelegate(QStringLiteral("Widget")), m_window(window)
    {
        Inspector::self()->addTopLevelHierarchyDelegate(this);
    }
    ~Hierarchy() override { Inspector::removeTopLevelHierarchyDelegate(this); }

    int numChildren(SharedPtr<Object> parent) override { return parent ? childrenOf(parent) : 1; }
    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        if (!parent) {
            return index == 0 ? wrap(m_window) : nullptr;
        }
        const bool exists = index >= 0 && index < childrenOf(parent);
        return exists ? wrap(unwrap<Window *>(parent)->childAt(index)) : nullptr;
    }
    SharedPtr<Object> childByName(SharedPtr<Object> parent, const QString &wanted) override
    {
        for (int i = 0; i < numChildren(parent); ++i) {
            SharedPtr<Object> object = child(parent, i);
            if (name(object) == wanted) {
                return object;
            }
        }
        return nullptr;
    }
    QString name(SharedPtr<Object> object) override { return unwrap<Widget *>(object)->name(); }
    QString qualifiedName(SharedPtr<Object> object) override
    {
        const bool isWindow = unwrap<Widget *>(object) == m_window;
        return isWindow ? m_window->name() : m_window->name() + u'.' + name(object);
    }
    int wrapperType(SharedPtr<Object>) override { return 0; }

private:
    static int childrenOf(const SharedPtr<Object> &parent)
    {
        const bool isWindow = parent->className() == QLatin1String("Window");
        return isWindow ? unwrap<Window *>(parent)->numChildren() : 0;
    }

    Window *m_window;
};

class Windows : public WindowInteractionDelegate
{
public:
    Windows() : WindowInteractionDelegate(QStringLiteral("Window")) {}

    FunctionCallResult<void> closeWindow(SharedPtr<Object>) override
    {
        return {QStringLiteral("The window has unsaved changes.")};
    }
    FunctionCallResult<void> maximizeWindow(SharedPtr<Object> window) override
    {
        return resizeWindowTo(window, 1920, 1080);
    }
    FunctionCallResult<void> minimizeWindow(SharedPtr<Object> window) override
    {
        unwrap<Window *>(window)->setVisibility(Widget::Minimized);
        return {};
    }
    FunctionCallResult<void> moveWindowTo(SharedPtr<Object>, int, int) override
    {
        return {QStringLiteral("Windows of the demo toolkit stay where they are.")};
    }
    FunctionCallResult<void> resizeWindowTo(SharedPtr<Object> window, int width,
                                            int height) override
    {
        unwrap<Window *>(window)->resize(width, height);
        return {};
    }
    FunctionCallResult<void> restoreWindow(SharedPtr<Object> window) override
    {
        unwrap<Window *>(window)->setVisibility(Widget::Shown);
        return {};
    }
};

// The script.

void say(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(text));
}

void title(const char *text)
{
    std::printf("\n%s\n", text);
}

SharedPtr<Object> find(const QString &name)
{
    SharedPtr<Object> object = Inspector::self()->object(name);
    if (!object) {
        for (const SharedPtr<Object> &window : Inspector::self()->objects()) {
            object = object ? object : window->childByName(name);
        }
    }
    if (!object) {
        throw std::runtime_error("not found: " + name.toStdString());
    }
    say(QStringLiteral("  found %1 \"%2\" with %3 children")
            .arg(object->className(), object->qualifiedName(),
                 QString::number(object->numChildren())));
    return object;
}

QString listed(const ObjectList &arguments)
{
    QStringList texts;
    for (const SharedPtr<Object> &argument : arguments) {
        const bool isWidget =
            !argument->isNull() && argument->isA(Inspector::self()->type(QStringLiteral("Widget")));
        texts << (isWidget ? argument->qualifiedName() : argument->toDebugString());
    }
    return texts.join(QLatin1String(", "));
}

/** Calls a method of @p c by its name and prints what came of it. */
void call(const Class *c, const SharedPtr<Object> &object, const char *name,
          const ObjectList &arguments)
{
    const QString method = QLatin1String(name);
    const MethodList overloads = c->methods(method);
    bool ok = false;
    const SharedPtr<Object> result = overloads.invoke(object, arguments, &ok);
    const QString line = QStringLiteral("  %1(%2)").arg(method, listed(arguments));
    if (ok) {
        const bool isVoid = result->className() == QLatin1String("void");
        say(line + QLatin1String(" -> ")
            + (isVoid ? QStringLiteral("done") : result->toDebugString()));
        return;
    }
    say(line + QLatin1String(" failed: ") + Inspector::self()->lastError());
    for (const QString &reason : overloads.explain(arguments)) {
        say(QLatin1String("    ") + reason);
    }
}

void call(const SharedPtr<Object> &object, const char *name, const ObjectList &arguments)
{
    call(object->type(), object, name, arguments);
}

void callGlobal(const char *name, const ObjectList &arguments)
{
    call(Inspector::self()->globalClass(), nullptr, name, arguments);
}

class EventPrinter : public EventHandler
{
public:
    void handleEvent(SharedPtr<Object> object, const QString &event,
                     const ObjectList &arguments) override
    {
        say(QStringLiteral("  event %1(%2) of %3")
                .arg(event, listed(arguments), object->qualifiedName()));
    }
};

void show(const SharedPtr<Object> &object, const char *name)
{
    const Property *property = object->type()->property(QLatin1String(name));
    const SharedPtr<Object> value = property->get(object);
    QString text = value->toDebugString();
    if (const Enum *type = property->argument().enumType()) {
        text += QStringLiteral(", which is %1").arg(type->valueToKey(value->toInteger(), nullptr));
    }
    say(QStringLiteral("  %1 is %2").arg(property->name(), text));
}

void assign(const SharedPtr<Object> &object, const char *name, const SharedPtr<Object> &value)
{
    const Property *property = object->type()->property(QLatin1String(name));
    const bool written = property->set(object, value);
    say(QStringLiteral("  %1 = %2 %3")
            .arg(property->name(), value->toDebugString(),
                 written ? QStringLiteral("-> done")
                         : QLatin1String("failed: ") + Inspector::self()->lastError()));
}

void describe(const Class *c)
{
    say(QLatin1String("  ") + c->fullyQualifiedClassName());
    for (int i = 0; i < c->numMethods(); ++i) {
        say(QLatin1String("    ") + c->method(i)->toString());
    }
    for (int i = 0; i < c->numProperties(); ++i) {
        say(QLatin1String("    ") + c->property(i)->toString()
            + QLatin1String(c->property(i)->isWritable() ? "" : " (read-only)"));
    }
}

void runScript()
{
    title("What the object model knows of the class Slider:");
    describe(Inspector::self()->type(QStringLiteral("Slider")));

    title("Finding objects by name:");
    const SharedPtr<Object> window = find(QStringLiteral("Mixer"));
    const SharedPtr<Object> slider = find(QStringLiteral("Volume"));

    title("Calling by name; arguments become what the method takes:");
    call(window, "toolkitName", {});
    call(window, "childAt", {wrap(0)});
    call(slider, "moveTo", {wrap(40)});
    call(slider, "moveTo", {wrap("62.5")});
    show(slider, "value");

    title("Overloads of resize():");
    call(slider, "resize", {wrap(300), wrap("50")});
    call(slider, "resize", {wrap(1.5)});
    show(slider, "width");
    show(slider, "height");

    title("An enum, by value and by key:");
    show(slider, "visibility");
    assign(slider, "visibility", wrap("Minimized"));
    show(slider, "visibility");

    title("Events reach the handlers of a class and its subclasses:");
    EventPrinter printer;
    Inspector::self()->installClassEventHandler(QStringLiteral("Widget"), QStringLiteral("resized"),
                                                &printer);
    call(slider, "resize", {wrap(0.5)});

    title("Global functions, of the library and of the toolkit:");
    callGlobal("_vantrel_window_resizeto", {window, wrap(640), wrap("480")});
    callGlobal("area", {window});
    callGlobal("_vantrel_window_close", {window});
    callGlobal("_vantrel_window_close", {slider});
    callGlobal("_vantrel_window_maximize", {window->type()->createNull()});

    title("What cannot be done is refused with a reason:");
    assign(slider, "width", wrap(10));
    call(slider, "resize", {window, wrap(1)});
    call(slider, "moveTo", {wrap(140)});
    call(slider->type()->createNull(), "moveTo", {wrap(1)});
    call(slider, "explode", {});
    show(slider, "width");
}

} // namespace

int main()
{
    registerToolkit();
    Window window(QStringLiteral("Mixer"));
    window.add<Slider>(QStringLiteral("Volume"));
    window.add<Widget>(QStringLiteral("Meter"));
    const Hierarchy hierarchy(&window);
    const Windows windows;
    try {
        runScript();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
