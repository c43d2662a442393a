#include "qt/script.h"
#include "qt/waiting.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <stdexcept>
#include <string>

using namespace Vantrel;
using namespace Vantrel::QtWrapper;

namespace {

/** Calls @p open in the event loop of the application. */
template <class F>
void callLater(F open)
{
    QTimer::singleShot(0, qApp, open);
}

/** Serves events until they end by themselves, as the main function of an application does. */
void runApplication()
{
    QApplication::exec();
}

bool isOpen(const QDialog &dialog)
{
    return waitFor([&] { return dialog.isVisible(); }, 5000, dialog.objectName());
}

/** Notes its end. */
struct Witness
{
    explicit Witness(bool *ended) : m_ended(ended) {}
    ~Witness() { *m_ended = true; }

private:
    bool *m_ended;
};

} // namespace

TEST(Script, SeesTheCallThatOpenedADialogReturn)
{
    QDialog first;
    QDialog second;
    QStringList events;
    const auto runDialog = [&](QDialog *dialog, const char *name) {
        dialog->exec();
        events << QString::fromLatin1(name);
    };
    const QString error = runScript([&] {
        callLater([&] { runDialog(&first, "first"); });
        ASSERT_TRUE(isOpen(first));
        callLater([&] { runDialog(&second, "second"); });
        ASSERT_TRUE(isOpen(second));
        events << QStringLiteral("both open");
        second.accept();
        EXPECT_TRUE(waitFor([&] { return events.size() == 2; }));
        first.accept();
        EXPECT_TRUE(waitFor([&] { return events.size() == 3; }));
    });
    EXPECT_EQ(QString(), error);
    EXPECT_EQ(QStringList({"both open", "second", "first"}), events);
}

TEST(Script, EndsWithTheTextOfAnException)
{
    bool unwound = false;
    EXPECT_EQ(QStringLiteral("went wrong"), runScript([&] {
                  const Witness witness(&unwound);
                  snooze(1);
                  throw std::runtime_error("went wrong");
              }));
    EXPECT_TRUE(unwound);
    EXPECT_NE(QString(), runScript([] { throw 1; }));
}

TEST(Script, KeepsTheExceptionItHandlesApartFromThoseOfTheApplication)
{
    QString caught;
    runScript([&] {
        callLater([] {
            try {
                throw std::runtime_error("of the application");
            } catch (const std::exception &) {
                snooze(50);
                EXPECT_THROW(throw, std::runtime_error);
            }
        });
        try {
            throw std::logic_error("of the script");
        } catch (const std::exception &) {
            snooze(20);
            try {
                throw;
            } catch (const std::exception &error) {
                caught = QString::fromLatin1(error.what());
            }
        }
        snooze(100);
    });
    EXPECT_EQ(QStringLiteral("of the script"), caught);
}

TEST(Script, IsOneAtATime)
{
    EXPECT_FALSE(isInScript());
    QString inside;
    QString beside;
    QString second;
    EXPECT_EQ(QString(), runScript([&] {
                  EXPECT_TRUE(isInScript());
                  inside = runScript([] { FAIL(); });
                  callLater([&] {
                      EXPECT_FALSE(isInScript());
                      beside = runScript([] { FAIL(); });
                  });
                  startScript([] { FAIL(); }, [&](const QString &error) { second = error; });
                  snooze(50);
              }));
    EXPECT_EQ(QStringLiteral("A script cannot run inside a script"), inside);
    EXPECT_EQ(QStringLiteral("A script is running already"), beside);
    EXPECT_EQ(beside, second);
}

TEST(Script, StartsWhenEventsAreServed)
{
    bool began = false;
    QString result = QStringLiteral("not ended");
    startScript(
        [&] {
            began = true;
            snooze(1);
        },
        [&](const QString &error) {
            EXPECT_FALSE(isInScript());
            result = error;
            QApplication::quit();
        });
    EXPECT_FALSE(began);
    runApplication();
    EXPECT_TRUE(began);
    EXPECT_EQ(QString(), result);
}

TEST(Script, ClosesTheDialogsThatItLeavesOpen)
{
    QDialog outer;
    QDialog inner;
    int numReturned = 0;
    EXPECT_EQ(QStringLiteral("gave up"), runScript([&] {
                  callLater([&] { outer.exec(), ++numReturned; });
                  ASSERT_TRUE(isOpen(outer));
                  callLater([&] { inner.exec(), ++numReturned; });
                  ASSERT_TRUE(isOpen(inner));
                  throw std::runtime_error("gave up");
              }));
    EXPECT_EQ(2, numReturned);
}

TEST(Script, WaitsInALoopThatItOpenedItself)
{
    QDialog dialog;
    bool waited = false;
    EXPECT_EQ(QString(), runScript([&] {
                  QTimer::singleShot(0, &dialog, [&] {
                      EXPECT_TRUE(isInScript());
                      waited = waitFor([&] { return dialog.isVisible(); });
                      snooze(30);
                      dialog.accept();
                  });
                  EXPECT_EQ(int(QDialog::Accepted), dialog.exec());
                  snooze(1);
              }));
    EXPECT_TRUE(waited);
}

TEST(Script, FailsAllWaitsWhenTheApplicationQuits)
{
    Inspector::self()->setError(QString());
    bool unwound = false;
    bool waited = true;
    QString text;
    QString result = QStringLiteral("not ended");
    startScript(
        [&] {
            const Witness witness(&unwound);
            callLater([] { QApplication::quit(); });
            waited = waitFor([] { return false; }, 60000, QStringLiteral("nothing"));
            text = Inspector::self()->lastError();
            EXPECT_FALSE(waitForObject(QStringLiteral("{type='NoSuchType'}")));
            snooze(60000);
        },
        [&](const QString &error) { result = error; });
    runApplication();
    EXPECT_FALSE(waited);
    EXPECT_TRUE(unwound);
    EXPECT_EQ(QString(), result);
    EXPECT_TRUE(text.contains(QStringLiteral("the application is quitting"))) << qPrintable(text);
}

TEST(Script, IsCutOffWhenItGoesOnAfterTheEnd)
{
    const struct
    {
        const char *what;
        bool catches;
        const char *error;
    } rows[] = {
        {"it only waits", false, "The script was cut off: "},
        {"it also catches what should end it", true, "The script was abandoned: "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        bool unwound = false;
        QString result;
        startScript(
            [&] {
                const Witness witness(&unwound);
                callLater([] { QApplication::quit(); });
                for (;;) {
                    try {
                        snooze(10);
                    } catch (...) {
                        if (!row.catches) {
                            throw;
                        }
                    }
                }
            },
            [&](const QString &error) { result = error; });
        runApplication();
        EXPECT_TRUE(result.startsWith(QLatin1String(row.error))) << qPrintable(result);
        EXPECT_EQ(!row.catches, unwound);
    }
    EXPECT_EQ(QString(), runScript([] { snooze(1); }));
}

TEST(Script, DeletesLaterWhatItAskedToDelete)
{
    QPointer<QObject> object = new QObject;
    runScript([&] {
        object->deleteLater();
        EXPECT_TRUE(object);
        snooze(20);
        EXPECT_FALSE(object);
    });
}
