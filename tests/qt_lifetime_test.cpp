#include "qt/wrapper.h"

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <gtest/gtest.h>

#include <QPushButton>

#include <memory>

using namespace Vantrel;
using Vantrel::QtWrapper::handleFor;
using Vantrel::QtWrapper::qobjectFor;

TEST(QtLifetime, InvalidatesTheHandleOfADestroyedObject)
{
    auto button = std::make_unique<QPushButton>();
    const SharedPtr<Object> handle = handleFor(button.get());
    EXPECT_EQ(handle, handleFor(button.get()));
    button.reset();
    EXPECT_FALSE(handle->isValid());
    EXPECT_TRUE(handle->isNull());
    EXPECT_EQ("Dead", handle->className());
    EXPECT_EQ(nullptr, qobjectFor(handle));
}
