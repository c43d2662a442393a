#include "qt_support.h"

#include "objectmodel/delegates.h"
#include "objectmodel/screenvalues.h"
#include "objectmodel/windowinteraction.h"
#include "objectmodel/wrap.h"

#include "qt/script.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDataStream>
#include <QDialog>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QMainWindow>
#include <QPushButton>
#include <QRasterWindow>

#include <climits>
#include <functional>

using namespace Vantrel;
using QtSupport::find;

namespace {

using Function = SharedPtr<Object> (*)(const ObjectList &);

/** The last error of a call that fails, without the verb; empty for one that succeeds. */
QString refusal(Function function, const SharedPtr<Object> &window, std::vector<int> numbers = {})
{
    Inspector::self()->lastError();
    ObjectList arguments{window};
    for (const int number : numbers) {
        arguments << wrap(number);
    }
    const bool isDone = bool(function(arguments));
    const QString error = Inspector::self()->lastError();
    EXPECT_EQ(isDone, error.isEmpty()) << qPrintable(error);
    return error;
}

QRect geometry(const SharedPtr<Object> &window)
{
    const ScreenRectangle r = unwrapScreenRectangle(_vantrel_window_geometry_get({window}));
    return QRect(r.x, r.y, r.width, r.height);
}

class Window : public QMainWindow
{
public:
    explicit Window(const char *name)
    {
        setObjectName(QString::fromUtf8(name));
        setGeometry(200, 150, 300, 200);
        show();
        QCoreApplication::processEvents();
    }

    std::function<void(QCloseEvent *)> whenClosed;

protected:
    void closeEvent(QCloseEvent *event) override
    {
        if (whenClosed) {
            whenClosed(event);
        }
    }
};

} // namespace

TEST(QtWindows, MoveAndResizeByTheFrame)
{
    Window window("winPlaced");
    const SharedPtr<Object> object = find("{name='winPlaced'}");
    ASSERT_TRUE(object);
    EXPECT_EQ(window.frameGeometry(), geometry(object));
    EXPECT_EQ(QString(), refusal(_vantrel_window_moveto, object, {40, 60}));
    EXPECT_EQ(QString(), refusal(_vantrel_window_resizeto, object, {400, 250}));
    QCoreApplication::processEvents();
    EXPECT_EQ(QRect(40, 60, 400, 250), geometry(object));
    EXPECT_EQ(QRect(40, 60, 400, 250), window.frameGeometry());
}

TEST(QtWindows, ChangeTheirStates)
{
    Window window("winStates");
    const SharedPtr<Object> object = find("{name='winStates'}");
    ASSERT_TRUE(object);
    const struct
    {
        const char *what;
        Function function;
        Qt::WindowStates expected;
    } rows[] = {
        {"maximize", _vantrel_window_maximize, Qt::WindowMaximized},
        {"minimize what is maximized", _vantrel_window_minimize,
         Qt::WindowMaximized | Qt::WindowMinimized},
        {"restore to maximized", _vantrel_window_restore, Qt::WindowMaximized},
        {"fill the screen", _vantrel_window_fullscreen_set, Qt::WindowFullScreen},
        {"restore from the whole screen", _vantrel_window_restore, Qt::WindowNoState},
        {"restore what is as it was", _vantrel_window_restore, Qt::WindowNoState},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(QString(), refusal(row.function, object));
        QCoreApplication::processEvents();
        EXPECT_EQ(int(row.expected), int(window.windowState() & ~Qt::WindowActive));
    }
}

TEST(QtWindows, SayWhyTheyRefuse)
{
    Window window("winRefusing");
    auto *child = new QPushButton(QStringLiteral("WinChild"), &window);
    child->show();
    Window hidden("winHidden");
    Window fixed("winFixed");
    fixed.setFixedSize(120, 80);
    Window limited("winLimited");
    limited.setMinimumSize(100, 90);
    limited.setMaximumSize(500, 400);
    Window maximized("winMaximized");
    maximized.showMaximized();
    QGraphicsScene scene;
    QGraphicsView view(&scene);
    auto *embedded = new QWidget;
    embedded->setObjectName(QStringLiteral("winEmbedded"));
    scene.addWidget(embedded);
    view.show();
    const SharedPtr<Object> hiddenObject = find("{name='winHidden'}");
    hidden.hide();
    const struct
    {
        const char *what;
        const char *name;
        Function function;
        std::vector<int> numbers;
        const char *reason;
    } rows[] = {
        {"no window",
         "{text='WinChild'}",
         _vantrel_window_close,
         {},
         "Can't close the QPushButton 'WinChild': it is not a window; its window is the "
         "QMainWindow 'winRefusing'."},
        {"no window, for its geometry",
         "{text='WinChild'}",
         _vantrel_window_geometry_get,
         {},
         "Can't fetch geometry for the QPushButton 'WinChild': it is not a window"},
        {"hidden", nullptr, _vantrel_window_maximize, {}, "'winHidden': it is hidden."},
        {"fixed, to be larger",
         "{name='winFixed'}",
         _vantrel_window_resizeto,
         {300, 300},
         "Can't resize the QMainWindow 'winFixed': its size is fixed at"},
        {"fixed, to fill the screen",
         "{name='winFixed'}",
         _vantrel_window_fullscreen_set,
         {},
         "its size is fixed at"},
        {"below the minimum",
         "{name='winLimited'}",
         _vantrel_window_resizeto,
         {-5, 200},
         "its minimum size is"},
        {"above the maximum",
         "{name='winLimited'}",
         _vantrel_window_resizeto,
         {600, 200},
         "its maximum size is"},
        {"far beyond all screens",
         "{name='winLimited'}",
         _vantrel_window_moveto,
         {INT_MAX, INT_MIN},
         "the numbers are out of range, which is 16777215."},
        {"maximized",
         "{name='winMaximized'}",
         _vantrel_window_moveto,
         {1, 1},
         "Can't move the QMainWindow 'winMaximized': it is maximized."},
        {"embedded",
         "{name='winEmbedded'}",
         _vantrel_window_moveto,
         {1, 1},
         "it is embedded in a graphics scene."},
        {"a platform without order",
         "{name='winRefusing'}",
         _vantrel_window_foreground_set,
         {},
         "the platform \"offscreen\" does not let applications order their windows."},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const SharedPtr<Object> object = row.name ? find(row.name) : hiddenObject;
        ASSERT_TRUE(object);
        const QString error = refusal(row.function, object, row.numbers);
        EXPECT_TRUE(error.contains(QString::fromUtf8(row.reason))) << qPrintable(error);
    }
    EXPECT_EQ(QSize(120, 80), fixed.size()) << "a refusal changes nothing";
}

TEST(QtWindows, AreOutOfReachBehindAModalDialog)
{
    Window window("winBlocked");
    QDialog dialog(&window);
    dialog.setObjectName(QStringLiteral("winBlocking"));
    dialog.setWindowModality(Qt::WindowModal);
    dialog.show();
    Window other("winFree");
    const QString error = refusal(_vantrel_window_close, find("{name='winBlocked'}"));
    EXPECT_TRUE(
        error.endsWith(QStringLiteral("it is blocked by the modal window QDialog 'winBlocking'.")))
        << qPrintable(error);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(QString(), refusal(_vantrel_window_maximize, find("{name='winFree'}")));
    EXPECT_EQ(QString(), refusal(_vantrel_window_close, find("{name='winBlocking'}")));
    EXPECT_EQ(QString(), refusal(_vantrel_window_close, find("{name='winBlocked'}")));
    EXPECT_FALSE(window.isVisible());
}

TEST(QtWindows, ThatAreNoWidgetsAreHandledToo)
{
    QRasterWindow window;
    window.setObjectName(QStringLiteral("winRaster"));
    window.setGeometry(100, 100, 200, 100);
    window.show();
    QCoreApplication::processEvents();
    const SharedPtr<Object> object = find("{name='winRaster'}");
    ASSERT_TRUE(object);
    EXPECT_EQ(QString(), refusal(_vantrel_window_moveto, object, {30, 40}));
    EXPECT_EQ(QString(), refusal(_vantrel_window_resizeto, object, {260, 160}));
    QCoreApplication::processEvents();
    EXPECT_EQ(QRect(30, 40, 260, 160), geometry(object));
    EXPECT_EQ(QString(), refusal(_vantrel_window_maximize, object));
    EXPECT_EQ(QString(), refusal(_vantrel_window_close, object));
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(
        refusal(_vantrel_window_focus_set, object).endsWith(QStringLiteral("it is hidden.")));
}

TEST(QtWindows, CloseOnlyWhenTheApplicationAgrees)
{
    Window window("winStubborn");
    const SharedPtr<Object> object = find("{name='winStubborn'}");
    window.whenClosed = [](QCloseEvent *event) { event->ignore(); };
    EXPECT_EQ(QStringLiteral("Can't close the QMainWindow 'winStubborn': the application refused."),
              refusal(_vantrel_window_close, object));
    auto *deleted = new Window("winDeleted");
    deleted->whenClosed = [deleted](QCloseEvent *) { deleted->deleteLater(); };
    EXPECT_EQ(QString(), refusal(_vantrel_window_close, find("{name='winDeleted'}")));
    EXPECT_FALSE(deleted->isVisible());
}

TEST(QtWindows, LetAScriptAnswerWhatClosingAsks)
{
    Window window("winAsking");
    const SharedPtr<Object> object = find("{name='winAsking'}");
    int answer = -1;
    window.whenClosed = [&](QCloseEvent *event) {
        QDialog question(&window);
        question.setObjectName(QStringLiteral("winSave"));
        answer = question.exec();
        event->setAccepted(answer == QDialog::Accepted);
    };
    QString atQuestion;
    QString behindQuestion;
    QString refused;
    QtWrapper::runScript([&] {
        atQuestion = refusal(_vantrel_window_close, object);
        behindQuestion = refusal(_vantrel_window_maximize, object);
        // Closing a question rejects it.
        refusal(_vantrel_window_close, find("{name='winSave'}"));
        window.whenClosed = [](QCloseEvent *event) { event->ignore(); };
        refused = refusal(_vantrel_window_close, object);
    });
    EXPECT_EQ(QString(), atQuestion);
    EXPECT_TRUE(behindQuestion.contains(QStringLiteral("QDialog 'winSave'")));
    EXPECT_EQ(QDialog::Rejected, answer);
    EXPECT_TRUE(refused.endsWith(QStringLiteral("the application refused.")))
        << qPrintable(refused);
    EXPECT_TRUE(window.isVisible());
}

TEST(QtWindows, TakeTheFocusInTurn)
{
    Window first("winFirst");
    Window second("winSecond");
    for (const char *name : {"{name='winFirst'}", "{name='winSecond'}"}) {
        const SharedPtr<Object> object = find(name);
        QString error;
        QtWrapper::runScript([&] { error = refusal(_vantrel_window_focus_set, object); });
        EXPECT_EQ(QString(), error);
        const SharedPtr<Object> focused = _vantrel_window_focused({});
        EXPECT_TRUE(focused && focused->sameAs(object)) << name;
    }
}
