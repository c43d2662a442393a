#include "objectmodel/shared.h"

#include <gtest/gtest.h>

using namespace Vantrel;

namespace {

class Counted : public Shared
{
public:
    explicit Counted(int *alive) : m_alive(alive) { ++*m_alive; }
    ~Counted() override { --*m_alive; }

private:
    int *m_alive;
};

} // namespace

TEST(SharedPtr, DeletesWithTheLastReference)
{
    int alive = 0;
    SharedPtr<Counted> first(new Counted(&alive));
    EXPECT_EQ(1u, first->referenceCount());
    {
        SharedPtr<Counted> second = first;
        SharedPtr<Shared> base = second;
        SharedPtr<Counted> moved = std::move(second);
        EXPECT_TRUE(second.isNull());
        EXPECT_EQ(3u, first->referenceCount());
        EXPECT_TRUE(base == moved);
    }
    first = SharedPtr<Counted>(first.get()); // assigning the same object must not delete it
    EXPECT_EQ(1u, first->referenceCount());
    EXPECT_EQ(1, alive);
    first = SharedPtr<Counted>(new Counted(&alive));
    EXPECT_EQ(1, alive);
    first.reset();
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(first == nullptr);
}

TEST(SharedPtr, BorrowedHandlesLeaveAnUnheldObjectToItsCreator)
{
    int alive = 0;
    Counted onStack(&alive);
    {
        auto handle = SharedPtr<Counted>::borrowed(&onStack);
        auto second = SharedPtr<Counted>::borrowed(&onStack);
    }
    EXPECT_EQ(1, alive);
    EXPECT_EQ(0u, onStack.referenceCount());

    auto *onHeap = new Counted(&alive);
    {
        auto handle = SharedPtr<Counted>::borrowed(onHeap);
    }
    EXPECT_EQ(2, alive);
    {
        SharedPtr<Counted> owner(onHeap);
        auto handle = SharedPtr<Counted>::borrowed(onHeap);
        EXPECT_EQ(2u, onHeap->referenceCount());
    }
    EXPECT_EQ(1, alive);
}
