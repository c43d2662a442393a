#include "testclass.h"

#include "objectmodel/objectmap.h"

#include <cstdlib>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

int data[2] = {7, 7};

/**
 * Uses the library before main() and again when main() is over and the static
 * objects of the library, which was used first, are gone.
 */
class BeforeAndAfter
{
public:
    BeforeAndAfter() : m_class(*new TestClass("EtEarly"))
    {
        m_class.addProperty("value", intArgument());
        m_class.onGet = [](int, void *value) {
            return inspector()->createPrimitive(*static_cast<int *>(value));
        };
        use();
    }
    ~BeforeAndAfter()
    {
        use();
        m_class.onGet = nullptr;
    }
    void use()
    {
        const SharedPtr<Object> a(new Object(&data[0], &m_class, ObjectAttribute()));
        const SharedPtr<Object> b(new Object(&data[1], &m_class, ObjectAttribute()));
        require(a->compare(b));
        require(a->toDebugString() == QLatin1String("{ value = 7 : int } : EtEarly"));
        require(a->index() != b->index());
        require(inspector()->findObject(QStringLiteral("{a='1'}")).isNull());
        require(inspector()->numObjects() == 0);
        ObjectMap map(false);
        require(map.symbolicName(QStringLiteral("{type='x'}"), true) == QLatin1String(":_x"));
        Object::zombie()->toString();
    }

private:
    static void require(bool holds)
    {
        if (!holds) {
            std::abort();
        }
    }

    TestClass &m_class;
} beforeAndAfter;

} // namespace

int main()
{
    beforeAndAfter.use();
}
