#include "qt/wrapper.h"

#include <gtest/gtest.h>

#include <QApplication>

#include <memory>

#if defined(__SANITIZE_ADDRESS__)
#define VANTREL_LEAK_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VANTREL_LEAK_SANITIZER
#endif
#endif

#ifdef VANTREL_LEAK_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace {

/** The platform without a display never frees its screen, which is no fault of ours. */
std::unique_ptr<QApplication> makeApplication(int &argc, char **argv)
{
#ifdef VANTREL_LEAK_SANITIZER
    const __lsan::ScopedDisabler disabler;
#endif
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    const auto application = makeApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (!Vantrel::QtWrapper::install()) {
        return 1;
    }
    return RUN_ALL_TESTS();
}
