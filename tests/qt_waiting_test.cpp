#include "qt/script.h"
#include "qt/waiting.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include <functional>
#include <stdexcept>

using namespace Vantrel;
using namespace Vantrel::QtWrapper;

namespace {

QString lastError()
{
    return Inspector::self()->lastError();
}

/** A window with a button in it that is found by its name alone. */
class Waiting : public ::testing::Test
{
protected:
    Waiting()
    {
        lastError();
        m_window.setObjectName(QStringLiteral("waitingWindow"));
        m_window.resize(300, 200);
        m_button.setObjectName(QStringLiteral("waitingButton"));
        m_button.setGeometry(20, 20, 100, 30);
        m_window.show();
    }

    /** The error of waiting in vain for the button. */
    QString error(int timeout = 120)
    {
        EXPECT_FALSE(waitForObject(m_name, timeout));
        return lastError();
    }
    bool isReady(int timeout = 5000) { return bool(waitForObject(m_name, timeout)); }

    const QString m_name = QStringLiteral("{name='waitingButton'}");
    QWidget m_window;
    QPushButton m_button{QStringLiteral("Press"), &m_window};
};

bool contains(const QString &text, const char *part)
{
    return text.contains(QLatin1String(part));
}

} // namespace

TEST_F(Waiting, TellsWhichCheckWasFalseAndHowLong)
{
    QLabel cover(QStringLiteral("cover"), &m_window);
    cover.setGeometry(0, 0, 200, 100);
    cover.hide();
    QDialog modal;
    modal.setWindowTitle(QStringLiteral("Really?"));
    modal.setModal(true);
    const struct
    {
        const char *what;
        std::function<void(bool)> hinder;
    } rows[] = {
        {"not visible for ", [&](bool on) { m_button.setHidden(on); }},
        {"not enabled for ", [&](bool on) { m_button.setDisabled(on); }},
        {"covered by QLabel 'cover' for ", [&](bool on) { cover.setVisible(on); }},
        {"its window was blocked by the modal dialog QDialog 'Really?' for ",
         [&](bool on) { modal.setVisible(on); }},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_TRUE(isReady()) << qPrintable(lastError());
        row.hinder(true);
        const QString text = error();
        EXPECT_TRUE(text.startsWith(
            QStringLiteral("waitForObject('%1'): %2").arg(m_name, QLatin1String(row.what))))
            << qPrintable(text);
        QTimer::singleShot(40, &m_window, [&] { row.hinder(false); });
        EXPECT_TRUE(isReady()) << qPrintable(lastError());
    }
}

TEST_F(Waiting, CountsTheTimeOfTheLastObstacleOnly)
{
    m_button.setEnabled(false);
    m_button.hide();
    QTimer::singleShot(100, &m_window, [&] { m_button.show(); });
    const QString text = error(200);
    QRegularExpression times(QStringLiteral("not enabled for (\\d+) ms of (\\d+) ms$"));
    const QRegularExpressionMatch match = times.match(text);
    ASSERT_TRUE(match.hasMatch()) << qPrintable(text);
    EXPECT_LT(match.captured(1).toInt(), match.captured(2).toInt());
}

TEST_F(Waiting, LetsMovementEnd)
{
    QTimer mover;
    int numMoves = 0;
    QObject::connect(&mover, &QTimer::timeout, [&] {
        m_button.move(m_button.x() + 1, 20);
        mover.stop();
        if (++numMoves < 40) {
            mover.start(5);
        }
    });
    mover.start(5);
    EXPECT_TRUE(contains(error(60), "moving for "));
    EXPECT_TRUE(isReady());
    EXPECT_EQ(40, numMoves);
}

TEST_F(Waiting, IsNotHinderedByWhatLetsTheMouseThrough)
{
    QLabel glass(QStringLiteral("glass"), &m_window);
    glass.setAttribute(Qt::WA_TransparentForMouseEvents);
    glass.setGeometry(0, 0, 200, 100);
    glass.show();
    QLabel caption(QStringLiteral("caption"), &m_button);
    caption.setObjectName(QStringLiteral("waitingCaption"));
    caption.setAttribute(Qt::WA_TransparentForMouseEvents);
    caption.setGeometry(10, 5, 50, 20);
    caption.show();
    EXPECT_TRUE(isReady()) << qPrintable(lastError());
    EXPECT_TRUE(waitForObject(QStringLiteral("{name='waitingCaption'}"), 1000))
        << qPrintable(lastError());
    QDialog beside(&m_window);
    beside.resize(100, 60);
    beside.show();
    EXPECT_TRUE(waitForObject(QStringLiteral("{name='waitingWindow'}"), 1000))
        << qPrintable(lastError());
}

TEST_F(Waiting, TakesWhatHasNoPlaceAsReady)
{
    QMenu menu;
    QAction *action = menu.addAction(QStringLiteral("Never shown"));
    const QString name = QStringLiteral("{text='Never shown'}");
    EXPECT_TRUE(waitForObject(name, 500)) << qPrintable(lastError());
    action->setEnabled(false);
    EXPECT_FALSE(waitForObject(name, 30));
    EXPECT_TRUE(contains(lastError(), ": not enabled for "));
}

TEST_F(Waiting, TellsWhatCameNearTheName)
{
    const QString name = QStringLiteral("{name='waitingButton' text='Push'}");
    EXPECT_FALSE(waitForObject(name, 30));
    const QString text = lastError();
    EXPECT_TRUE(text.startsWith(QStringLiteral("waitForObject('%1'): not found for ").arg(name)));
    EXPECT_TRUE(contains(text, "near miss ")) << qPrintable(text);
    EXPECT_TRUE(contains(text, ": text is 'Press', wanted ='Push'")) << qPrintable(text);
}

TEST_F(Waiting, RefusesANameThatIsNone)
{
    QElapsedTimer time;
    time.start();
    for (const char *name : {"", "{name='x", "{name}"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(waitForObject(QString::fromLatin1(name)));
        EXPECT_FALSE(lastError().isEmpty());
    }
    EXPECT_LT(time.elapsed(), defaultTimeout);
}

TEST_F(Waiting, LooksOnceWithoutTime)
{
    EXPECT_TRUE(isReady(0));
    EXPECT_TRUE(isReady(-5));
    m_button.setEnabled(false);
    QTimer::singleShot(0, &m_window, [&] { m_button.setEnabled(true); });
    EXPECT_TRUE(contains(error(0), "not enabled for "));
    EXPECT_TRUE(waitForObjectExists(m_name, 0));
    EXPECT_FALSE(waitFor([] { return false; }, -1));
}

TEST_F(Waiting, DoesNotTakeWhatMatchedBefore)
{
    const QString name = QStringLiteral("{text='Press'}");
    EXPECT_TRUE(waitForObjectExists(name, 0));
    m_button.setText(QStringLiteral("Other"));
    EXPECT_FALSE(waitForObjectExists(name, 0));
}

TEST_F(Waiting, SurvivesTheEndOfTheObject)
{
    QPointer<QPushButton> button = new QPushButton(&m_window);
    button->setObjectName(QStringLiteral("waitingVictim"));
    button->setEnabled(false);
    button->show();
    const QString name = QStringLiteral("{name='waitingVictim'}");
    const SharedPtr<Object> handle = waitForObjectExists(name, 0);
    QTimer::singleShot(40, &m_window, [&] { delete button; });
    EXPECT_FALSE(waitUntilReady(handle, 5000));
    EXPECT_TRUE(contains(lastError(), "the object was destroyed"));
    EXPECT_FALSE(waitForObject(name, 30));
    EXPECT_TRUE(contains(lastError(), "not found for "));
    EXPECT_FALSE(waitUntilReady({}, 30));
}

TEST_F(Waiting, TellsWhatHeldItUp)
{
    // Outside a script, so the dialog runs on top of the wait.
    QDialog dialog;
    dialog.setWindowTitle(QStringLiteral("In the way"));
    QTimer::singleShot(0, &dialog, [&] { dialog.exec(); });
    QTimer::singleShot(300, &dialog, &QDialog::accept);
    EXPECT_FALSE(waitFor([] { return false; }, 50, QStringLiteral("nothing")));
    const QString text = lastError();
    EXPECT_TRUE(text.startsWith(QStringLiteral("waitFor('nothing'): not true for ")));
    EXPECT_TRUE(contains(text, "QDialog 'In the way', which was open meanwhile, held up the wait"))
        << qPrintable(text);
}

TEST_F(Waiting, AsksAConditionInTheStackOfItsCaller)
{
    const auto ask = [] {
        int numAsked = 0;
        const bool inScript = isInScript();
        return waitFor([&] { return isInScript() == inScript && ++numAsked == 3; }, 1000);
    };
    EXPECT_TRUE(ask());
    bool answer = false;
    runScript([&] { answer = ask(); });
    EXPECT_TRUE(answer);
    EXPECT_FALSE(waitFor([]() -> bool { throw std::runtime_error("no idea"); }));
    EXPECT_TRUE(contains(lastError(), "the condition failed: no idea"));
    EXPECT_FALSE(waitFor([]() -> bool { throw 1; }));
}
