#include "qt/propertytexts_p.h"

#include "qt/handles_p.h"
#include "qt/node_p.h"
#include "qt/values_p.h"

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <QHash>
#include <QMetaProperty>
#include <QObject>
#include <QPointer>

#include <algorithm>

namespace Vantrel::QtWrapper {

namespace {

struct StaticProperty
{
    QString name;
    QMetaProperty property;
    QMetaEnum enumerator;
};

using Table = std::vector<StaticProperty>;

/** Qt complains about reading others, whose type nobody has registered. */
bool isKnown(const QMetaProperty &property)
{
    return property.isEnumType() || property.userType() != QMetaType::UnknownType;
}

/** By name; of a property that a subclass declares again only the last, which counts. */
Table makeTable(const QMetaObject *metaObject)
{
    Table table;
    for (int i = metaObject->propertyCount() - 1; i >= 0; --i) {
        const QMetaProperty property = metaObject->property(i);
        if (property.isReadable() && isKnown(property)) {
            const QMetaEnum enumerator =
                property.isEnumType() ? property.enumerator() : QMetaEnum();
            table.push_back({QString::fromUtf8(property.name()), property, enumerator});
        }
    }
    std::stable_sort(table.begin(), table.end(),
                     [](const auto &a, const auto &b) { return a.name < b.name; });
    const auto isSame = [](const auto &a, const auto &b) { return a.name == b.name; };
    table.erase(std::unique(table.begin(), table.end(), isSame), table.end());
    return table;
}

int numTableUsers = 0;

QHash<const QMetaObject *, std::shared_ptr<const Table>> &tables()
{
    static auto *const all = new QHash<const QMetaObject *, std::shared_ptr<const Table>>;
    return *all;
}

std::shared_ptr<const Table> tableOf(const QMetaObject *metaObject)
{
    if (numTableUsers == 0) {
        return std::make_shared<const Table>(makeTable(metaObject));
    }
    std::shared_ptr<const Table> &table = tables()[metaObject];
    if (!table) {
        table = std::make_shared<const Table>(makeTable(metaObject));
    }
    return table;
}

/** Collects texts while the application runs, as getters are its code. */
class Reader
{
public:
    explicit Reader(const SharedPtr<Object> &object) : m_object(object) {}

    PropertyTexts read()
    {
        addCommon();
        if (const QPointer<QObject> object = qobjectOf(m_object)) {
            addStatic(object);
            addDynamic(object);
        } else {
            addOfItem();
        }
        m_texts.isIncomplete = !nodeOf(m_object);
        sort();
        return std::move(m_texts);
    }

private:
    template <class Get>
    void add(const QString &name, Get get)
    {
        try {
            const QString value = get();
            if (!value.isNull()) {
                m_texts.values.emplace_back(name, value);
            }
        } catch (...) {
            m_texts.unreadable << name;
        }
    }

    /** First, because of equal names the first one stays. */
    void addCommon()
    {
        static const QString yes = QStringLiteral("true");
        static const QString no = QStringLiteral("false");
        const auto with = [this](QString (*get)(const Node &)) {
            return [this, get] {
                const Node node = nodeOf(m_object);
                return node ? get(node) : QString();
            };
        };
        add(QStringLiteral("text"), with([](const Node &node) {
                const QString label = labelOf(node);
                return label.isEmpty() ? QString() : label;
            }));
        add(QStringLiteral("visible"),
            with([](const Node &node) { return isShown(node) ? yes : no; }));
        add(QStringLiteral("enabled"),
            with([](const Node &node) { return isEnabled(node) ? yes : no; }));
    }

    void addStatic(const QPointer<QObject> &object)
    {
        if (!object) {
            return;
        }
        const std::shared_ptr<const Table> table = tableOf(object->metaObject());
        m_texts.values.reserve(table->size() + 8);
        for (const StaticProperty &entry : *table) {
            if (!object) {
                return;
            }
            add(entry.name, [&] { return textOf(entry.property.read(object), entry.enumerator); });
        }
    }

    void addDynamic(const QPointer<QObject> &object)
    {
        const QList<QByteArray> names =
            object ? object->dynamicPropertyNames() : QList<QByteArray>();
        for (const QByteArray &name : names) {
            if (object && !name.startsWith("_q_")) { // those are notes of Qt itself
                add(QString::fromUtf8(name), [&] { return textOf(object->property(name)); });
            }
        }
    }

    void addOfItem()
    {
        const Class *type = m_object ? m_object->type() : nullptr;
        for (int i = 0; type && i < type->numProperties() && m_object->isValid(); ++i) {
            const Property *property = type->property(i);
            if (property->isReadable()) {
                add(property->name(), [&] {
                    const SharedPtr<Object> value = property->get(m_object);
                    return value && !value->isNull() ? value->toString() : QString();
                });
            }
        }
    }

    void sort()
    {
        auto &values = m_texts.values;
        std::stable_sort(values.begin(), values.end(),
                         [](const auto &a, const auto &b) { return a.first < b.first; });
        const auto isSame = [](const auto &a, const auto &b) { return a.first == b.first; };
        values.erase(std::unique(values.begin(), values.end(), isSame), values.end());
    }

    const SharedPtr<Object> m_object;
    PropertyTexts m_texts;
};

} // namespace

PropertyTexts propertyTexts(const SharedPtr<Object> &object)
{
    return Reader(object).read();
}

PropertyTables::PropertyTables()
{
    ++numTableUsers;
}

PropertyTables::~PropertyTables()
{
    if (--numTableUsers == 0) {
        tables().clear();
    }
}

} // namespace Vantrel::QtWrapper
