#include "qt/waiting.h"

#include "qt/actions_p.h"
#include "qt/handles_p.h"
#include "qt/names_p.h"
#include "qt/readiness_p.h"
#include "qt/script_p.h"
#include "qt/values_p.h"

#include "objectmodel/class.h"
#include "objectmodel/globalfunctions.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectsearch.h"

#include <QMetaProperty>
#include <QVariant>

#include <algorithm>
#include <exception>
#include <optional>

namespace Vantrel::QtWrapper {

namespace {

/** How many objects that come near the wanted one an error tells. */
constexpr std::size_t maxNearMisses = 3;

QString call(const char *function, const QString &argument)
{
    return QStringLiteral("%1('%2')").arg(QLatin1String(function), argument);
}

/** One condition that a near miss did not meet. */
QString difference(const NearMiss::Condition &condition)
{
    return condition.actual.isNull()
        ? QStringLiteral("has no %1").arg(condition.name)
        : QStringLiteral("%1 is '%2', wanted %3'%4'")
              .arg(condition.name, condition.actual, condition.operatorText, condition.wanted);
}

QString nearMissText(const NearMiss &miss)
{
    QStringList differences;
    for (const NearMiss::Condition &condition : miss.conditions) {
        if (!condition.held) {
            differences << difference(condition);
        }
    }
    return QStringLiteral("\n    near miss %1: %2")
        .arg(nameOf(nodeOf(miss.object)), differences.join(QLatin1String(", ")));
}

/** The reason why the last search failed. Reads the last error. */
QString searchError()
{
    QString text;
    const std::vector<NearMiss> misses = Inspector::self()->nearMisses();
    for (std::size_t i = 0; i < std::min(misses.size(), maxNearMisses); ++i) {
        text += nearMissText(misses[i]);
    }
    return Inspector::self()->lastError().trimmed() + text;
}

/** A search that is repeated until it succeeds. */
class Search
{
public:
    explicit Search(const QString &name) : m_name(name) {}

    SharedPtr<Object> find();
    /** Whether the name is wrong, so that no object can ever have it. */
    bool isHopeless() const { return m_isHopeless; }
    QString text(const Deadline &deadline) const;

private:
    QString m_name;
    QString m_error;
    SharedPtr<Object> m_found;
    bool m_isHopeless = false;
};

void forgetFound(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    object->get(&data);
    Inspector::self()->invalidateObjectCache(data);
}

SharedPtr<Object> Search::find()
{
    Inspector *const inspector = Inspector::self();
    inspector->setError(QString());
    if (!m_found) {
        // What the Inspector remembers need not match any more.
        m_found = inspector->findObject(m_name);
    }
    if (m_found) {
        forgetFound(m_found);
        m_found = inspector->findObject(m_name);
    }
    if (!m_found) {
        m_error = searchError();
        m_isHopeless = m_name.isEmpty()
            || m_error.startsWith(QLatin1String("Cannot find object with invalid object name"));
    }
    return m_found;
}

QString Search::text(const Deadline &deadline) const
{
    return m_isHopeless ? m_error
                        : QStringLiteral("not found for %1 ms of %2 ms%3: %4")
                              .arg(QString::number(deadline.elapsed()),
                                   QString::number(deadline.timeout()), deadline.remark(), m_error);
}

/** Whether @p condition holds; the reason why it cannot be told goes to @p failure. */
bool holds(const std::function<bool()> &condition, QString *failure)
{
    try {
        return condition();
    } catch (const CutOff &) {
        throw;
    } catch (const std::exception &error) {
        *failure = QString::fromLocal8Bit(error.what());
    } catch (...) {
        *failure = QStringLiteral("an exception of an unknown type");
    }
    return false;
}

/** The text of a property; nothing when there is no such property. */
std::optional<QString> propertyText(const SharedPtr<Object> &object, const QString &name)
{
    if (const Property *property = object->type()->property(name)) {
        const SharedPtr<Object> value = object->type()->getProperty(object, property);
        return value ? value->toString() : QString();
    }
    const QObject *qobject = qobjectOf(object);
    const QVariant dynamic = qobject ? qobject->property(name.toUtf8().constData()) : QVariant();
    if (dynamic.isValid()) {
        return textOf(dynamic);
    }
    return name == QLatin1String("text") ? std::make_optional(labelOf(nodeOf(object)))
                                         : std::nullopt;
}

/** The text by which names tell the value of a property; null when it has no such text. */
QString textInNames(const SharedPtr<Object> &object, const QString &name)
{
    const QObject *qobject = qobjectOf(object);
    const int index =
        qobject ? qobject->metaObject()->indexOfProperty(name.toUtf8().constData()) : -1;
    if (index == -1) {
        return QString();
    }
    const QMetaProperty property = qobject->metaObject()->property(index);
    return textOf(property.read(qobject), property.enumerator());
}

bool isUsable(const SharedPtr<Object> &object)
{
    return object && object->isValid() && !object->isNull();
}

SharedPtr<Object> result(bool succeeded)
{
    return succeeded ? Inspector::self()->voidObject() : SharedPtr<Object>();
}

} // namespace

SharedPtr<Object> waitForObject(const QString &name, int timeout)
{
    Deadline deadline(timeout);
    Search search(name);
    Readiness readiness(timeout > 0);
    SharedPtr<Object> object;
    do {
        object = search.find();
        if (object && readiness.look(object)) {
            return object;
        }
        if (!object) {
            readiness.reset();
        }
    } while (!search.isHopeless() && deadline.waitForNextLook());
    failWith(call("waitForObject", name),
             object ? readiness.text(deadline) : search.text(deadline));
    return {};
}

SharedPtr<Object> waitForObjectExists(const QString &name, int timeout)
{
    Deadline deadline(timeout);
    Search search(name);
    do {
        if (const SharedPtr<Object> object = search.find()) {
            return object;
        }
    } while (!search.isHopeless() && deadline.waitForNextLook());
    failWith(call("waitForObjectExists", name), search.text(deadline));
    return {};
}

bool waitUntilReady(const SharedPtr<Object> &object, int timeout)
{
    const QString kind = isUsable(object) ? object->className() : QStringLiteral("no object");
    Deadline deadline(timeout);
    Readiness readiness(timeout > 0);
    do {
        if (readiness.look(object)) {
            return true;
        }
    } while (!readiness.isGone() && deadline.waitForNextLook());
    const QString name = nameOf(nodeOf(object));
    return failWith(call("waitUntilReady", name.isEmpty() ? kind : name), readiness.text(deadline));
}

bool waitFor(const std::function<bool()> &condition, int timeout, const QString &what)
{
    const QString operation = call("waitFor", what.isEmpty() ? QStringLiteral("condition") : what);
    Deadline deadline(timeout);
    QString failure;
    do {
        if (holds(condition, &failure)) {
            return true;
        }
        if (!failure.isNull()) {
            return failWith(operation, QStringLiteral("the condition failed: %1").arg(failure));
        }
    } while (deadline.waitForNextLook());
    return failWith(operation,
                    QStringLiteral("not true for %1 ms%2")
                        .arg(QString::number(deadline.elapsed()), deadline.remark()));
}

void snooze(int milliseconds)
{
    serveEvents(std::max(milliseconds, 0));
}

namespace {

/** Waits until the property of an object has a text. */
bool waitForText(const SharedPtr<Object> &object, const QString &property, const QString &value,
                 int timeout)
{
    const QString operation =
        QStringLiteral("waitFor(%1.%2 is '%3')")
            .arg(isUsable(object) ? object->className() : QStringLiteral("null"), property, value);
    Deadline deadline(timeout);
    QString actual;
    do {
        if (!isUsable(object)) {
            return failWith(operation, QStringLiteral("there is no such object any more"));
        }
        const std::optional<QString> text = propertyText(object, property);
        if (!text) {
            return failWith(operation, QStringLiteral("the object has no such property"));
        }
        const QString inNames = isUsable(object) ? textInNames(object, property) : QString();
        if (*text == value || (!inNames.isNull() && inNames == value)) {
            return true;
        }
        actual = inNames.isNull() ? *text : inNames;
    } while (deadline.waitForNextLook());
    return failWith(operation,
                    QStringLiteral("still '%1' after %2 ms%3")
                        .arg(actual, QString::number(deadline.elapsed()), deadline.remark()));
}

} // namespace

void registerWaiting()
{
    addFunction("waitForObject", [](const QString &name) { return waitForObject(name); }, {"name"});
    addFunction("waitForObject",
                [](const QString &name, int timeout) { return waitForObject(name, timeout); },
                {"name", "timeout"});
    addFunction("waitForObjectExists",
                [](const QString &name) { return waitForObjectExists(name); }, {"name"});
    addFunction("waitForObjectExists",
                [](const QString &name, int timeout) { return waitForObjectExists(name, timeout); },
                {"name", "timeout"});
    addFunction("waitFor",
                [](const SharedPtr<Object> &object, const QString &property, const QString &value) {
                    return result(waitForText(object, property, value, defaultTimeout));
                },
                {"object", "property", "value"});
    addFunction("waitFor",
                [](const SharedPtr<Object> &object, const QString &property, const QString &value,
                   int timeout) { return result(waitForText(object, property, value, timeout)); },
                {"object", "property", "value", "timeout"});
    addFunction("snooze", [](int milliseconds) { snooze(milliseconds); }, {"milliseconds"});
}

} // namespace Vantrel::QtWrapper
