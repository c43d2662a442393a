#include "qt/actions.h"
#include "qt/script.h"
#include "qt/waiting.h"
#include "qt/wrapper.h"

#include "objectmodel/globalobject.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/touchbuilder.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QGraphicsRectItem>
#include <QGraphicsView>
#include <QGroupBox>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QTouchEvent>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <climits>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Vantrel;
using namespace Vantrel::QtWrapper;

namespace {

QString lastError()
{
    return Inspector::self()->lastError();
}

bool contains(const QString &text, const char *part)
{
    return text.contains(QLatin1String(part));
}

/** Writes down the events of the mouse and of touches. */
class Pad : public QWidget
{
public:
    explicit Pad(QWidget *parent) : QWidget(parent) {}

    QStringList log;
    QList<QPoint> positions;
    QList<QTouchEvent::TouchPoint> touches;
    /** Called while a button is down and the mouse moves. */
    std::function<void()> onMove;

protected:
    void mousePressEvent(QMouseEvent *event) override { note("press", event); }
    void mouseReleaseEvent(QMouseEvent *event) override { note("release", event); }
    void mouseDoubleClickEvent(QMouseEvent *event) override { note("double", event); }
    void mouseMoveEvent(QMouseEvent *event) override
    {
        positions << event->pos();
        if (onMove && event->buttons()) {
            std::exchange(onMove, nullptr)();
        }
    }
    void wheelEvent(QWheelEvent *event) override
    {
        const QPoint angle = event->angleDelta();
        log << QStringLiteral("wheel %1 %2").arg(angle.x()).arg(angle.y());
        event->accept();
    }
    bool event(QEvent *event) override
    {
        if (event->type() < QEvent::TouchBegin || event->type() > QEvent::TouchEnd) {
            return QWidget::event(event);
        }
        touches << static_cast<QTouchEvent *>(event)->touchPoints();
        log << (event->type() == QEvent::TouchBegin        ? QStringLiteral("begin")
                    : event->type() == QEvent::TouchUpdate ? QStringLiteral("update")
                                                           : QStringLiteral("end"));
        return true;
    }

private:
    void note(const char *what, QMouseEvent *event)
    {
        log << QString::fromLatin1(what);
        positions << event->pos();
        modifiers = event->modifiers();
        button = event->button();
    }

public:
    Qt::KeyboardModifiers modifiers;
    Qt::MouseButton button = Qt::NoButton;
};

/** A window with a column of widgets. */
class Actions : public ::testing::Test
{
protected:
    Actions()
    {
        lastError();
        setActionTimeout(2000);
        m_window.setWindowTitle(QStringLiteral("Actions"));
        m_window.resize(400, 400);
    }
    ~Actions() override { setActionTimeout(defaultTimeout); }

    template <class W, class... A>
    W *add(A... arguments)
    {
        auto *widget = new W(arguments..., &m_window);
        m_layout->addWidget(widget);
        return widget;
    }
    /** Runs a script with the window open. */
    void script(const std::function<void()> &body)
    {
        m_window.show();
        EXPECT_EQ(QString(), runScript(body));
        EXPECT_EQ(QString(), lastError());
    }
    SharedPtr<Object> find(const char *name)
    {
        const SharedPtr<Object> object = waitForObjectExists(QString::fromUtf8(name), 2000);
        EXPECT_TRUE(object) << qPrintable(lastError());
        return object;
    }
    /** The error of an action that is to fail soon. */
    QString errorOf(const std::function<bool()> &action)
    {
        setActionTimeout(60);
        EXPECT_FALSE(action());
        setActionTimeout(2000);
        return lastError();
    }

    QWidget m_window;
    QVBoxLayout *m_layout = new QVBoxLayout(&m_window);
};

/** A call of a global function by its name. */
SharedPtr<Object> call(const char *name, const ObjectList &arguments)
{
    return Inspector::self()
        ->globalClass()
        ->methods(QString::fromLatin1(name))
        .invoke(SharedPtr<Object>(), arguments, nullptr);
}

} // namespace

TEST_F(Actions, ClickReturnsWhileTheDialogsItOpenedAreAnswered)
{
    auto *button = add<QPushButton>(QStringLiteral("Open"));
    int result = -1;
    QObject::connect(button, &QPushButton::clicked, [&] {
        QDialog outer(&m_window);
        auto *more = new QPushButton(QStringLiteral("More"), &outer);
        QObject::connect(more, &QPushButton::clicked, [&] {
            QDialog inner(&outer);
            auto *done = new QPushButton(QStringLiteral("Done"), &inner);
            QObject::connect(done, &QPushButton::clicked, &inner, &QDialog::accept);
            if (inner.exec() == QDialog::Accepted) {
                outer.done(7);
            }
        });
        result = outer.exec();
    });
    script([&] {
        EXPECT_TRUE(mouseClick(handleFor(button)));
        EXPECT_TRUE(mouseClick(find("{text='More'}")));
        const QString error = errorOf([&] { return mouseClick(handleFor(button)); });
        EXPECT_TRUE(contains(error,
                             "mouseClick(QPushButton 'Open'): its window was blocked by the "
                             "modal dialog QDialog for "))
            << qPrintable(error);
        EXPECT_TRUE(mouseClick(find("{text='Done'}")));
        EXPECT_TRUE(waitFor([&] { return result == 7; }));
    });
}

TEST_F(Actions, ClickOutsideAScriptIsQueued)
{
    auto *button = add<QPushButton>(QStringLiteral("Open"));
    QDialog dialog(&m_window);
    QObject::connect(button, &QPushButton::clicked, &dialog, &QDialog::exec);
    m_window.show();
    EXPECT_TRUE(mouseClick(handleFor(button))) << qPrintable(lastError());
    EXPECT_FALSE(dialog.isVisible());
    QTimer::singleShot(100, &dialog, &QDialog::accept);
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    snooze(1);
    EXPECT_EQ(1, accepted.count());
}

TEST_F(Actions, MouseGoesWhereItIsSent)
{
    auto *pad = add<Pad>();
    script([&] {
        const auto handle = handleFor(pad);
        EXPECT_TRUE(mouseClick(handle, QPoint(5, 7), Qt::RightButton, Qt::ShiftModifier));
        EXPECT_EQ(QPoint(5, 7), pad->positions.last());
        EXPECT_EQ(Qt::RightButton, pad->button);
        EXPECT_EQ(Qt::ShiftModifier, int(pad->modifiers));
        EXPECT_TRUE(mouseClick(handle));
        EXPECT_TRUE(mouseClick(handle));
        EXPECT_EQ(pad->rect().center(), pad->positions.last());
        EXPECT_FALSE(pad->log.contains(QStringLiteral("double")));
        pad->log.clear();
        EXPECT_TRUE(mouseDoubleClick(handle));
        EXPECT_EQ(QStringList({"press", "release", "double", "release"}), pad->log);
        pad->log.clear();
        pad->positions.clear();
        EXPECT_TRUE(mouseDrag(handle, QPoint(10, 10), QPoint(80, -40)));
        EXPECT_EQ(QStringList({"press", "release"}), pad->log);
        EXPECT_EQ(QPoint(90, -30), pad->positions.last());
        EXPECT_GT(pad->positions.size(), 6);
        pad->log.clear();
        EXPECT_TRUE(mouseWheel(handle, 1, -2));
        EXPECT_EQ(QStringList({"wheel -120 0", "wheel 0 -120", "wheel 0 -120"}), pad->log);
    });
}

TEST_F(Actions, RefusesWhatNobodyCouldDo)
{
    auto *pad = add<Pad>();
    auto *button = add<QPushButton>(QStringLiteral("Off"));
    button->setEnabled(false);
    pad->setFixedSize(100, 50);
    script([&] {
        const auto handle = handleFor(pad);
        const struct
        {
            const char *error;
            std::function<bool()> action;
        } rows[] = {
            {"not enabled for ", [&] { return mouseClick(handleFor(button)); }},
            {"the position (100, 10) is outside of the object, which is 100 x 50 pixels",
             [&] { return mouseClick(handle, QPoint(100, 10)); }},
            {"3 is no button of the mouse", [&] { return mouseClick(handle, nowhere, 3); }},
            {"0 is no button of the mouse", [&] { return mouseDrag(handle, {}, {}, 0); }},
            {"1 is no combination of keyboard modifiers",
             [&] { return mouseClick(handle, nowhere, 1, 1); }},
            {"not on the screen for ", [&] { return mouseClick(handleFor(qApp)); }},
            {"there is no such object", [&] { return mouseClick({}); }},
            {"Object '{text='absent'}' not found",
             [&] { return mouseClick(Inspector::self()->findObject("{text='absent'}")); }},
            {"the object takes no focus", [&] { return type(handle, QStringLiteral("x")); }},
            {"takes no touch", [&] { return replayTouch(handle, QStringLiteral("<x/>")); }},
            {"is longer than 100000 pixels",
             [&] { return mouseDrag(handle, {}, QPoint(INT_MIN, 0)); }},
            {"are more than 10000 steps", [&] { return mouseWheel(handle, 0, INT_MIN); }},
            {"are more than 10000 steps", [&] { return mouseWheel(handle, INT_MAX, 0); }},
            {"there is no such object", [&] { return activate({}); }},
            {"there is no such object", [&] { return !screenshot({}).isEmpty(); }},
        };
        for (const auto &row : rows) {
            SCOPED_TRACE(row.error);
            const QString error = errorOf(row.action);
            EXPECT_TRUE(contains(error, row.error)) << qPrintable(error);
        }
        EXPECT_EQ(QStringList(), pad->log);
    });
}

TEST_F(Actions, SurvivesWhatTheApplicationDoesToTheObject)
{
    const struct
    {
        const char *what;
        std::function<void(QPushButton *, QWidget *)> react;
    } rows[] = {
        {"a slot deletes its sender",
         [](QPushButton *button, QWidget *) { button->deleteLater(); }},
        {"the window is closed", [](QPushButton *, QWidget *window) { window->close(); }},
        {"the window is deleted", [](QPushButton *, QWidget *window) { window->deleteLater(); }},
        {"the button moves away", [](QPushButton *button, QWidget *) { button->move(200, 200); }},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        for (const bool onPress : {false, true}) {
            QPointer<QWidget> window = new QWidget;
            auto *button = new QPushButton(QStringLiteral("Victim"), window);
            int numCalls = 0;
            const auto slot = [&] {
                ++numCalls;
                row.react(button, window);
            };
            if (onPress) {
                QObject::connect(button, &QPushButton::pressed, slot);
            } else {
                QObject::connect(button, &QPushButton::clicked, slot);
            }
            window->resize(300, 300);
            window->show();
            const SharedPtr<Object> handle = handleFor(button);
            EXPECT_EQ(QString(), runScript([&] {
                          EXPECT_TRUE(mouseClick(handle));
                          snooze(5);
                      }));
            EXPECT_EQ(1, numCalls);
            delete window;
            EXPECT_FALSE(mouseClick(handle));
        }
    }
    EXPECT_TRUE(contains(lastError(), "the object was destroyed"));
}

TEST_F(Actions, ScrollsIntoView)
{
    auto *area = add<QScrollArea>();
    auto *content = new QWidget;
    content->setFixedSize(2000, 2000);
    auto *view = new QTableView(content);
    view->setGeometry(1500, 1500, 200, 150);
    QStandardItemModel model(100, 20);
    view->setModel(&model);
    auto *button = new QPushButton(QStringLiteral("Far"), content);
    button->move(1000, 100);
    area->setWidget(content);
    QGraphicsScene scene(0, 0, 5000, 5000);
    auto *item = scene.addRect(4000, 4000, 50, 50);
    item->setData(0, 1);
    auto *graphics = add<QGraphicsView>();
    graphics->setScene(&scene);
    QSignalSpy clicked(button, &QPushButton::clicked);
    script([&] {
        EXPECT_TRUE(mouseClick(handleFor(button))) << qPrintable(lastError());
        EXPECT_EQ(1, clicked.count());
        EXPECT_TRUE(mouseClick(find("{type='ModelItem' row='80' column='15'}")))
            << qPrintable(lastError());
        EXPECT_EQ(model.index(80, 15), view->currentIndex());
        graphics->horizontalScrollBar()->setValue(0);
        graphics->verticalScrollBar()->setValue(0);
        EXPECT_TRUE(mouseClick(find("{type='QGraphicsRectItem'}"))) << qPrintable(lastError());
        EXPECT_GT(graphics->verticalScrollBar()->value(), 3000);
    });
}

TEST_F(Actions, TypesAsAPersonWould)
{
    auto *line = add<QLineEdit>();
    auto *next = add<QLineEdit>();
    auto *text = add<QPlainTextEdit>();
    auto *number = add<QSpinBox>();
    line->setText(QStringLiteral("old "));
    QStringList keys;
    struct Filter : QObject
    {
        explicit Filter(QStringList *list) : m_list(list) {}
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::KeyPress) {
                const auto *key = static_cast<QKeyEvent *>(event);
                *m_list << QKeySequence(key->key() | int(key->modifiers())).toString();
            }
            return false;
        }
        QStringList *m_list;
    } filter(&keys);
    script([&] {
        EXPECT_TRUE(type(handleFor(line), QString::fromUtf8("aB<<x>1\u00e9<Backspace>\U0001F600")));
        EXPECT_EQ(QString::fromUtf8("old aB<x>1\U0001F600"), line->text());
        line->installEventFilter(&filter);
        EXPECT_TRUE(type(handleFor(line), QStringLiteral("<Ctrl+A>Q<Tab>two")));
        EXPECT_EQ(QStringLiteral("Q"), line->text());
        EXPECT_EQ(QStringLiteral("two"), next->text());
        EXPECT_TRUE(keys.contains(QStringLiteral("Ctrl+A"))) << qPrintable(keys.join(" "));
        EXPECT_TRUE(keys.contains(QStringLiteral("Shift+Q")));
        EXPECT_TRUE(type(handleFor(text), QStringLiteral("one\ntwo<Return>three")));
        EXPECT_EQ(QStringLiteral("one\ntwo\nthree"), text->toPlainText());
        EXPECT_TRUE(type(handleFor(number), QStringLiteral("<Ctrl+A>42<Up>")));
        EXPECT_EQ(43, number->value());
        const QString error = errorOf([&] { return type(handleFor(line), "new<Ctrl+Foo>"); });
        EXPECT_EQ(QStringLiteral("type: unknown key 'Ctrl+Foo' at position 3"), error);
        EXPECT_TRUE(contains(errorOf([&] { return type(handleFor(line), "a<b"); }), "has no '>'"));
        EXPECT_EQ(QStringLiteral("Q"), line->text());
    });
}

TEST_F(Actions, KeysDoNotGoToAPopupThatIsClosed)
{
    auto *edit = add<QLineEdit>();
    QTreeWidget popup;
    popup.setWindowFlag(Qt::Popup);
    int returns = 0;
    QObject::connect(edit, &QLineEdit::returnPressed, [&] { ++returns; });
    script([&] {
        EXPECT_TRUE(type(handleFor(edit), QStringLiteral("a")));
        popup.show();
        popup.activateWindow();
        snooze(50);
        popup.hide();
        EXPECT_TRUE(type(handleFor(edit), QStringLiteral("b<Return>")));
        EXPECT_EQ(1, returns);
        EXPECT_EQ(QStringLiteral("ab"), edit->text());
    });
}

TEST_F(Actions, WheelGoesOnToWidgetsFurtherOut)
{
    auto *box = add<QSpinBox>();
    script([&] {
        EXPECT_TRUE(mouseWheel(handleFor(box), 0, 3)); // its line edit is under the mouse
        EXPECT_EQ(3, box->value());
    });
}

TEST_F(Actions, ShortcutGoesToTheWindowWithTheFocus)
{
    add<QLineEdit>();
    QShortcut save(QKeySequence(QStringLiteral("Ctrl+S")), &m_window);
    QShortcut chord(QKeySequence(QStringLiteral("Ctrl+K, Ctrl+C")), &m_window);
    QSignalSpy saved(&save, &QShortcut::activated);
    QSignalSpy struck(&chord, &QShortcut::activated);
    script([&] {
        EXPECT_TRUE(waitFor([&] { return m_window.isActiveWindow(); }));
        EXPECT_TRUE(shortcut(QStringLiteral("Ctrl+S")));
        EXPECT_TRUE(shortcut(QStringLiteral("Ctrl+K, Ctrl+C")));
        EXPECT_EQ(1, saved.count());
        EXPECT_EQ(1, struck.count());
        EXPECT_TRUE(contains(errorOf([] { return shortcut("Ctrl+Nothing"); }), "unknown key"));
    });
}

TEST_F(Actions, OpensTheMenusOnTheWay)
{
    auto *bar = add<QMenuBar>();
    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    QMenu *recent = file->addMenu(QStringLiteral("&Recent"));
    QAction *deep = recent->addAction(QStringLiteral("Deep"));
    QAction *off = recent->addAction(QStringLiteral("Off"));
    off->setEnabled(false);
    QMenu *edit = bar->addMenu(QStringLiteral("&Edit"));
    QAction *copy = edit->addAction(QStringLiteral("Copy"));
    auto *tool = add<QToolButton>();
    auto *menu = new QMenu(QStringLiteral("Tools"), tool);
    QAction *run = menu->addAction(QStringLiteral("Run"));
    tool->setMenu(menu);
    QMenu lost(QStringLiteral("Lost"));
    QAction *nowhereAction = lost.addAction(QStringLiteral("Unreachable"));
    QSignalSpy deepSpy(deep, &QAction::triggered);
    QSignalSpy copySpy(copy, &QAction::triggered);
    QSignalSpy runSpy(run, &QAction::triggered);
    script([&] {
        EXPECT_TRUE(activate(handleFor(deep))) << qPrintable(lastError());
        EXPECT_EQ(1, deepSpy.count());
        EXPECT_TRUE(activate(handleFor(copy))) << qPrintable(lastError());
        EXPECT_EQ(1, copySpy.count());
        const QString error = errorOf([&] { return activate(handleFor(off)); });
        EXPECT_EQ(QStringLiteral("activate: the menu item 'Off' is not enabled"), error);
        // From a menu that was left open to one in another place of the bar.
        EXPECT_TRUE(activate(handleFor(copy))) << qPrintable(lastError());
        EXPECT_EQ(2, copySpy.count());
        for (const auto mode :
             {QToolButton::InstantPopup, QToolButton::MenuButtonPopup, QToolButton::DelayedPopup}) {
            tool->setPopupMode(mode);
            EXPECT_TRUE(activate(handleFor(run))) << mode << qPrintable(lastError());
        }
        EXPECT_EQ(3, runSpy.count());
        EXPECT_TRUE(contains(errorOf([&] { return activate(handleFor(nowhereAction)); }),
                             "nothing opens the menu 'Lost'"));
    });
}

TEST_F(Actions, ActivatesItemsOfAllKinds)
{
    auto *box = add<QComboBox>();
    box->addItems({QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three")});
    auto *tabs = add<QTabBar>();
    tabs->addTab(QStringLiteral("Front"));
    tabs->addTab(QStringLiteral("Back"));
    auto *check = add<QCheckBox>(QStringLiteral("Agree"));
    auto *group = add<QGroupBox>(QStringLiteral("Group"));
    group->setCheckable(true);
    auto *view = add<QTableView>();
    QStandardItemModel model(3, 2);
    model.setItem(1, 1, new QStandardItem(QStringLiteral("Cell")));
    view->setModel(&model);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    QSignalSpy doubleClicked(view, &QTableView::doubleClicked);
    script([&] {
        EXPECT_TRUE(mouseClick(handleFor(box)));
        const auto three = find("{text='Three'}");
        EXPECT_TRUE(activate(three)) << qPrintable(lastError());
        EXPECT_TRUE(waitFor([&] { return box->currentIndex() == 2; }, 2000));
        box->setCurrentIndex(0);
        EXPECT_TRUE(waitFor([&] { return !box->view()->isVisible(); }, 2000));
        EXPECT_TRUE(activate(three)) << qPrintable(lastError());
        EXPECT_TRUE(waitFor([&] { return box->currentIndex() == 2; }, 2000));
        EXPECT_TRUE(activate(find("{text='Back'}"))) << qPrintable(lastError());
        EXPECT_EQ(1, tabs->currentIndex());
        EXPECT_TRUE(activate(handleFor(check)));
        EXPECT_TRUE(check->isChecked());
        EXPECT_TRUE(activate(handleFor(group)));
        EXPECT_FALSE(group->isChecked());
        EXPECT_TRUE(activate(find("{text='Cell'}"))) << qPrintable(lastError());
        EXPECT_EQ(1, doubleClicked.count());
    });
}

TEST_F(Actions, DragsOfDataDoNotHangTheScript)
{
    auto *pad = add<Pad>();
    auto *target = add<QLineEdit>();
    pad->setMinimumHeight(60);
    bool returned = false;
    pad->onMove = [&] {
        auto *drag = new QDrag(pad);
        drag->setMimeData(new QMimeData);
        drag->mimeData()->setText(QStringLiteral("dropped"));
        drag->exec(Qt::CopyAction);
        returned = true;
    };
    script([&] {
        const bool dropped = dragTo(handleFor(pad), handleFor(target));
        EXPECT_TRUE(waitFor([&] { return returned; }));
        if (!dropped) {
            // Platforms without a display have no drag and drop.
            EXPECT_TRUE(contains(lastError(), "nothing was dropped: "));
        }
        EXPECT_EQ(dropped ? QStringLiteral("dropped") : QString(), target->text());
    });
}

TEST_F(Actions, ReplaysAPinchInTime)
{
    auto *pad = add<Pad>();
    pad->setAttribute(Qt::WA_AcceptTouchEvents);
    TouchBuilder builder;
    builder.addGesture(300, 300, TouchBuilder::Pixel);
    ASSERT_TRUE(builder.pinch(150, 150, 100, 20, 120));
    ASSERT_TRUE(builder.generateSamples(20));
    const QString xml = QString::fromStdString(builder.toXml());
    builder.translate(1000, 0);
    const QString outside = QString::fromStdString(builder.toXml());
    script([&] {
        QElapsedTimer time;
        time.start();
        EXPECT_TRUE(replayTouch(handleFor(pad), xml)) << qPrintable(lastError());
        EXPECT_GE(time.elapsed(), 115);
        ASSERT_GE(pad->log.size(), 5);
        EXPECT_EQ(QStringLiteral("begin"), pad->log.first());
        EXPECT_EQ(QStringLiteral("end"), pad->log.last());
        const auto distance = [](const QTouchEvent::TouchPoint &a,
                                 const QTouchEvent::TouchPoint &b) {
            return QLineF(a.pos(), b.pos()).length();
        };
        const int n = pad->touches.size();
        EXPECT_NEAR(200, distance(pad->touches[0], pad->touches[1]), 3);
        EXPECT_NEAR(40, distance(pad->touches[n - 2], pad->touches[n - 1]), 3);
        EXPECT_EQ(Qt::TouchPointReleased, pad->touches[n - 1].state());
        const struct
        {
            const char *error;
            QString xml;
        } rows[] = {
            {"Error in XML data", QStringLiteral("<gestures>")},
            {"outside of what can be seen", outside},
        };
        pad->log.clear();
        for (const auto &row : rows) {
            const QString error = errorOf([&] { return replayTouch(handleFor(pad), row.xml); });
            EXPECT_TRUE(contains(error, row.error)) << qPrintable(error);
        }
        EXPECT_EQ(QStringList(), pad->log);
    });
}

TEST_F(Actions, TakesPicturesOfObjectsAndWindows)
{
    auto *pad = add<Pad>();
    pad->setFixedSize(50, 40);
    QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("pad.png"));
    script([&] {
        EXPECT_TRUE(saveScreenshot(handleFor(pad), file));
        EXPECT_EQ(QSize(50, 40), QImage(file).size());
        EXPECT_EQ(m_window.size(), QImage::fromData(screenshot(handleFor(pad), true)).size());
        const QString error =
            errorOf([&] { return saveScreenshot(handleFor(pad), "/no/such/directory/x.png"); });
        EXPECT_TRUE(contains(error, "cannot write '/no/such/directory/x.png'"));
    });
}

TEST_F(Actions, WriteToAPipeAndDoNotReplaceIt)
{
    QTemporaryDir directory;
    const QString pipe = directory.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(0, mkfifo(qPrintable(pipe), 0600));
    const int reader = open(qPrintable(pipe), O_RDONLY | O_NONBLOCK);
    script([&] { EXPECT_TRUE(saveScreenshot(handleFor(&m_window), pipe)); });
    EXPECT_FALSE(QFileInfo(pipe).isFile());
    char signature[4] = {};
    EXPECT_EQ(4, read(reader, signature, 4));
    EXPECT_EQ(QByteArray("\x89PNG"), QByteArray(signature, 4));
    close(reader);
}

TEST_F(Actions, RefusesMenusThatContainEachOther)
{
    QMenu first(QStringLiteral("First"));
    QMenu second(QStringLiteral("Second"));
    first.addMenu(&second);
    second.addMenu(&first);
    script([&] {
        const QString error = errorOf([&] { return activate(handleFor(&first)); });
        EXPECT_TRUE(contains(error, "which is below itself")) << qPrintable(error);
    });
}

TEST_F(Actions, AreFunctionsOfScripts)
{
    auto *pad = add<Pad>();
    script([&] {
        const auto handle = handleFor(pad);
        EXPECT_TRUE(call("_vantrel_mouse_click",
                         {handle, wrap(3), wrap(4), wrap("RightButton"), wrap(0x06000000)}))
            << qPrintable(lastError());
        EXPECT_EQ(QPoint(3, 4), pad->positions.last());
        EXPECT_EQ(Qt::RightButton, pad->button);
        EXPECT_EQ(Qt::ShiftModifier | Qt::ControlModifier, pad->modifiers);
        EXPECT_TRUE(call("_vantrel_mouse_click", {handle, wrap(3), wrap(4), wrap(2)}));
        EXPECT_FALSE(call("_vantrel_type", {handle, wrap("x")}));
        EXPECT_TRUE(contains(lastError(), "the object takes no focus"));
        EXPECT_TRUE(call("waitFor", {handle, wrap("enabled"), wrap("true"), wrap(100)}))
            << qPrintable(lastError());
        EXPECT_TRUE(call("waitFor", {handle, wrap("enabled"), wrap("true")}));
        EXPECT_TRUE(call("waitFor", {handle, wrap("focusPolicy"), wrap("NoFocus"), wrap(0)}))
            << "as names match it";
        EXPECT_TRUE(call("waitFor", {handle, wrap("focusPolicy"), wrap("0"), wrap(0)}))
            << "as the property reads";
        EXPECT_TRUE(call("snooze", {wrap(1)}));
    });
}
