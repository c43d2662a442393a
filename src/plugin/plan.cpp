#include "plugin/plan.h"

#include <QFile>
#include <QUrl>

#include <utility>

namespace Vantrel {

namespace {

using Action = Plan::Step::Action;

const std::pair<const char *, Action> actions[] = {
    {"tree", Action::Tree}, {"shot", Action::Shot}, {"find", Action::Find}, {"run", Action::Run}};

class PlanWriter
{
public:
    void add(const char *key, const QString &value)
    {
        m_text += m_text.isEmpty() ? "" : ";";
        m_text += QByteArray(key) + '=' + QUrl::toPercentEncoding(value, "/");
    }
    QString text() const { return QString::fromLatin1(m_text); }

private:
    QByteArray m_text;
};

void addStep(PlanWriter &writer, const Plan::Step &step)
{
    if (step.isJson) {
        writer.add("json", QStringLiteral("1"));
    }
    if (step.depth >= 0) {
        writer.add("depth", QString::number(step.depth));
    }
    if (!step.filter.isEmpty()) {
        writer.add("filter", step.filter);
    }
    if (!step.output.isEmpty()) {
        writer.add("output", step.output);
    }
    for (const QString &argument : step.arguments) {
        writer.add("arg", argument);
    }
    for (const auto &[key, action] : actions) {
        if (action == step.action) {
            writer.add(key, step.target);
        }
    }
}

class PlanReader
{
public:
    Plan read(const QString &text, QString *error)
    {
        for (const QString &pair : text.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            const int equals = pair.indexOf(QLatin1Char('='));
            const QString key = pair.left(equals);
            const QString value = QUrl::fromPercentEncoding(pair.mid(equals + 1).toUtf8());
            if (equals < 0 || !(readStep(key, value) || readOption(key, value))) {
                *error = QStringLiteral("the plan has an invalid part \"%1\"").arg(pair);
                return {};
            }
        }
        error->clear();
        return m_plan;
    }

private:
    bool readStep(const QString &key, const QString &value)
    {
        for (const auto &[name, action] : actions) {
            if (key == QLatin1String(name)) {
                m_step.action = action;
                m_step.target = value;
                m_plan.steps.push_back(std::exchange(m_step, {}));
                return !value.isEmpty();
            }
        }
        return false;
    }
    bool readOption(const QString &key, const QString &value)
    {
        if (key == QLatin1String("json")) {
            m_step.isJson = value == QLatin1String("1");
            return m_step.isJson || value == QLatin1String("0");
        }
        if (key == QLatin1String("arg")) {
            m_step.arguments << value;
            return true;
        }
        if (key == QLatin1String("depth")) {
            return readNumber(value, &m_step.depth);
        }
        if (key == QLatin1String("timeout")) {
            return readNumber(value, &m_plan.timeout);
        }
        const std::pair<const char *, QString *> texts[] = {{"filter", &m_step.filter},
                                                            {"output", &m_step.output},
                                                            {"status", &m_plan.statusFile},
                                                            {"pluginpath", &m_plan.pluginPath}};
        for (const auto &[name, text] : texts) {
            if (key == QLatin1String(name)) {
                *text = value;
                return true;
            }
        }
        return false;
    }
    static bool readNumber(const QString &value, int *number)
    {
        bool isNumber = false;
        *number = value.toInt(&isNumber);
        return isNumber && *number >= 0;
    }

    Plan m_plan;
    Plan::Step m_step{};
};

} // namespace

QString Plan::toText() const
{
    PlanWriter writer;
    for (const Step &step : steps) {
        addStep(writer, step);
    }
    writer.add("timeout", QString::number(timeout));
    if (!statusFile.isEmpty()) {
        writer.add("status", statusFile);
    }
    if (!pluginPath.isEmpty()) {
        writer.add("pluginpath", pluginPath);
    }
    return writer.text();
}

Plan Plan::fromText(const QString &text, QString *error)
{
    return PlanReader().read(text, error);
}

PlanStatus PlanStatus::fromFile(const QString &fileName)
{
    PlanStatus status;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return status;
    }
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        const QString word = line.section(QLatin1Char(' '), 0, 0);
        const QString rest = line.section(QLatin1Char(' '), 1);
        if (word == QLatin1String("loaded")) {
            status.isLoaded = true;
            status.processId = rest.toLongLong();
        } else if (word == QLatin1String("waiting")) {
            status.waitingFor = rest;
        } else if (word == QLatin1String("ready")) {
            status.isReady = true;
            status.readyTime = rest.toLongLong();
        } else if (word == QLatin1String("result")) {
            status.hasResult = true;
            status.result = rest.section(QLatin1Char(' '), 0, 0).toInt();
            status.resultText = rest.section(QLatin1Char(' '), 1);
        }
    }
    return status;
}

} // namespace Vantrel
