// How many blocks of memory a call or a value takes from malloc, which is
// replaced here by one that counts. Has a process to itself for that reason.

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

using namespace Vantrel;

extern "C" void *__libc_malloc(std::size_t size);

namespace {

int numBlocks = 0;

struct Counter
{
    int add(int amount, int times) { return value += amount * times; }
    int value = 0;
};

/** Those of the thousandth time: what is made once and kept does not count. */
template <class F>
int blocksOf(F once)
{
    for (int i = 0; i < 999; ++i) {
        once();
    }
    const int before = numBlocks;
    once();
    return numBlocks - before;
}

} // namespace

extern "C" void *malloc(std::size_t size)
{
    ++numBlocks;
    return __libc_malloc(size);
}

TEST(Blocks, ComeFromMallocOnlyForWhatIsNew)
{
    const Class *c =
        ClassBuilder<Counter>("BlocksCounter").method("add", &Counter::add, {"amount"}).add();
    ASSERT_TRUE(c);
    Counter counter;
    const SharedPtr<Object> object = wrap(&counter);
    const QString name = QStringLiteral("add");
    bool ok = false;
    EXPECT_EQ(0, blocksOf([] { wrap(7); }));
    EXPECT_EQ(0, blocksOf([&] {
        object->type()->methods(name).invoke(object, ObjectList{wrap(3), wrap(2)}, &ok);
    }));
    EXPECT_TRUE(ok);
    EXPECT_EQ(1, blocksOf([] { wrap("a text"); })) << "the text";
    std::vector<SharedPtr<Object>> many;
    many.reserve(2000);
    EXPECT_EQ(2, blocksOf([&] { many.push_back(wrap(7)); })) << "a handle and its value";
}
