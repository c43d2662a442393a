#ifndef VANTREL_STANDIN_H
#define VANTREL_STANDIN_H

#include "testclass.h"

#include "objectmodel/namespace.h"

#include <QStringList>

namespace VantrelTest {

/**
 * Takes the place of the class of its name in a namespace, for as long as it
 * is in scope, and writes down how it is used. Its raw slots take ints.
 */
class Standin
{
public:
    Standin(Namespace *nameSpace, const char *name)
        : m_nameSpace(nameSpace), m_before(nameSpace->getClass(QString::fromLatin1(name))),
          m_class(new TestClass(name, nameSpace))
    {
        m_class->onConstruct = [this](int index, void **arguments) {
            const int count = m_class->constructor(index)->signature().numArguments();
            note(QStringLiteral("construct"), index, count, arguments);
            return object();
        };
        m_class->onInvoke = [this](int id, void *, void **arguments, const Class *) {
            const Method *method = m_class->method(id);
            const int index = calls.size();
            note(method->name(), -1, method->signature().numArguments(), arguments);
            return answer ? answer(index) : SharedPtr<Object>();
        };
        m_class->onGet = [this](int id, void *) {
            calls << QStringLiteral("get ") + m_class->property(id)->name();
            return property ? property(id) : SharedPtr<Object>();
        };
    }
    ~Standin() { m_nameSpace->registerClass(m_before); }
    Q_DISABLE_COPY(Standin)

    TestClass &type() { return *m_class; }
    SharedPtr<Object> object()
    {
        return static_cast<const Class *>(m_class)->wrap(this, ObjectAttribute());
    }

    QStringList calls;
    /** The result of a method, by the number of calls before it. */
    std::function<SharedPtr<Object>(int)> answer;
    std::function<SharedPtr<Object>(int)> property;
    /** Whether the first argument of each call is a text. */
    bool textFirst = false;

private:
    void note(QString text, int index, int count, void **arguments)
    {
        if (index >= 0) {
            text += QString::number(index);
        }
        for (int i = 0; i < count; ++i) {
            const bool isText = textFirst && i == 0;
            text += u' '
                + (isText ? QString::fromUtf8(static_cast<const char *>(arguments[i]))
                          : QString::number(*static_cast<const int *>(arguments[i])));
        }
        calls << text;
    }

    Namespace *m_nameSpace;
    const Class *m_before;
    TestClass *m_class;
};

} // namespace VantrelTest

#endif // VANTREL_STANDIN_H
