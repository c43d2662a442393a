#ifndef VANTREL_TESTS_QT_SUPPORT_H
#define VANTREL_TESTS_QT_SUPPORT_H

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QString>

#include <gtest/gtest.h>

#include <ostream>

/** For messages of failed checks. */
inline void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << qPrintable(text) << '"';
}

namespace QtSupport {

/** The object with a name; a failure, with the reason, when there is none. */
inline Vantrel::SharedPtr<Vantrel::Object> find(const QString &name)
{
    Vantrel::Inspector::self()->lastError();
    const auto object = Vantrel::Inspector::self()->findObject(name);
    EXPECT_TRUE(object) << qPrintable(Vantrel::Inspector::self()->lastError());
    return object;
}

inline Vantrel::SharedPtr<Vantrel::Object> find(const char *name)
{
    return find(QString::fromUtf8(name));
}

} // namespace QtSupport

#endif // VANTREL_TESTS_QT_SUPPORT_H
