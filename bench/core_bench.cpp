#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectname.h"
#include "objectmodel/objectsearch.h"

#include <QHash>
#include <QObject>
#include <QVariant>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

using namespace Vantrel;

namespace {

constexpr int numClasses = 10000;
constexpr int numObjects = 10000;

struct Names
{
    Names()
    {
        for (int i = 0; i < numClasses; ++i) {
            const QByteArray name = "BenchClass" + QByteArray::number(i);
            const Class *c = new Class(name.constData(), true);
            names << QString::fromLatin1(name);
            starred << names.last() + QLatin1Char('*');
            hash.insert(names.last(), c);
        }
    }
    QStringList names;
    QStringList starred;
    QHash<QString, const Class *> hash;
};

Names &names()
{
    static Names made;
    return made;
}

void hashHit(benchmark::State &state)
{
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(names().hash.value(names().names[i = (i + 7919) % numClasses]));
    }
}

void classByName(benchmark::State &state)
{
    const Inspector *inspector = Inspector::self();
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(inspector->type(names().names[i = (i + 7919) % numClasses]));
    }
}

void classByNameWithStar(benchmark::State &state)
{
    const Inspector *inspector = Inspector::self();
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(inspector->type(names().starred[i = (i + 7919) % numClasses]));
    }
}

/** A flat tree of objects with two properties each. */
class Tree : public ObjectHierarchyDelegate
{
public:
    Tree() : ObjectHierarchyDelegate(QStringLiteral("BenchTree"))
    {
        for (int i = 0; i < numObjects; ++i) {
            auto *object = new QObject(&root);
            object->setObjectName(QStringLiteral("name%1").arg(i / 2));
            object->setProperty("text", QStringLiteral("text%1").arg(i));
        }
        Inspector::self()->addTopLevelHierarchyDelegate(this);
    }
    int numChildren(SharedPtr<Object>) override { return 0; }
    SharedPtr<Object> child(SharedPtr<Object>, int) override { return {}; }
    SharedPtr<Object> childByName(SharedPtr<Object>, const QString &) override { return {}; }
    QString name(SharedPtr<Object>) override { return QString(); }
    QString qualifiedName(SharedPtr<Object>) override { return QString(); }
    int wrapperType(SharedPtr<Object>) override { return 0; }
    SharedPtr<Object> objectByQualifiedName(SharedPtr<Object>, const ObjectName &name) override
    {
        ObjectMatcher matcher(name);
        for (QObject *object : root.children()) {
            const auto holds = [object](const ObjectMatcher::Condition &condition,
                                        QString *actual) {
                const QVariant value = object->property(condition.encodedName.constData());
                return value.isValid() && condition.holds(value.toString(), actual);
            };
            if (matcher.offer(holds, [&] { return wrapped(object); })) {
                return wrapped(object);
            }
        }
        return {};
    }

    QObject root;

private:
    static SharedPtr<Object> wrapped(QObject *object)
    {
        return Inspector::self()->type(7)->wrap(object, ObjectAttribute::Pointer());
    }
};

Tree &tree()
{
    static Tree made;
    return made;
}

void searchByHand(benchmark::State &state)
{
    const QString name = QStringLiteral("name%1").arg(numObjects / 2 - 1);
    const QString text = QStringLiteral("text%1").arg(numObjects - 1);
    for (auto _ : state) {
        for (const QObject *object : tree().root.children()) {
            if (object->property("objectName").toString() == name
                && object->property("text").toString() == text) {
                benchmark::DoNotOptimize(object);
                break;
            }
        }
    }
}

void searchByName(benchmark::State &state)
{
    tree();
    Inspector *inspector = Inspector::self();
    inspector->enableObjectCache(false);
    const QString name =
        QStringLiteral("{objectName='name%1' text='text%2'}")
            .arg(QString::number(numObjects / 2 - 1), QString::number(numObjects - 1));
    for (auto _ : state) {
        const SharedPtr<Object> found = inspector->findObject(name);
        if (!found) {
            state.SkipWithError("not found");
        }
    }
}

BENCHMARK(hashHit);
BENCHMARK(classByName);
BENCHMARK(classByNameWithStar);
BENCHMARK(searchByHand);
BENCHMARK(searchByName);

} // namespace
