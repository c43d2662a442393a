#ifndef CONTACTS_TESTRUN_H
#define CONTACTS_TESTRUN_H

#include "objectmodel/object.h"

#include <QDir>
#include <QString>
#include <QStringList>

#include <stdexcept>
#include <vector>

namespace Vantrel {
class UiElement;
}

/** What a step needed and did not get; ends the script. */
struct Failure : std::runtime_error
{
    explicit Failure(const QString &text) : std::runtime_error(text.toStdString()) {}
};

/**
 * One run of a script: the verbs that its steps are written with, each of which
 * throws a Failure, and what the run leaves behind: a transcript on standard
 * output, and in the output directory pictures and a page that shows it all.
 */
class TestRun
{
public:
    explicit TestRun(const QString &directory) : m_directory(directory) {}

    /** Begins a step of the transcript. */
    void step(const QString &title);
    void say(const QString &line);

    /** The object of that name, when it is ready. */
    Vantrel::SharedPtr<Vantrel::Object> object(const QString &name);
    /** The text of a property, read by reflection. */
    QString property(const QString &name, const char *property);
    /** Calls a method by its name. */
    Vantrel::SharedPtr<Vantrel::Object> call(const Vantrel::SharedPtr<Vantrel::Object> &object,
                                             const char *method,
                                             const Vantrel::ObjectList &arguments = {});
    /** Calls a global function. */
    Vantrel::SharedPtr<Vantrel::Object> callGlobal(const char *function,
                                                   const Vantrel::ObjectList &arguments);
    /** @p done is what a verb returned. */
    void require(bool done);
    void expect(const QString &what, const QString &actual, const QString &expected);
    /** Waits until the text of a property is @p expected. */
    void waitForText(const QString &name, const char *property, const QString &expected);

    void save(const QString &fileName, const QByteArray &content);
    /** Saves the picture of a window with the boxes and names of its objects. */
    void picture(const QString &fileName, const QString &caption, const QString &window);
    /** Shows a file that was saved on the page. */
    void show(const QString &fileName, const QString &caption);
    /** Shows the objects of a dump on the page, with their names. */
    void showTree(const Vantrel::UiElement &tree);
    /** Writes index.html. */
    void finish();

private:
    struct Exhibit
    {
        QString fileName;
        QString caption;
    };
    struct Step
    {
        QString title;
        QStringList lines;
        std::vector<Exhibit> exhibits;
        QStringList outline;
    };

    Step &current();
    QString html() const;

    QDir m_directory;
    std::vector<Step> m_steps;
};

#endif // CONTACTS_TESTRUN_H
