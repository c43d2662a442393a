#ifndef VANTREL_QT_QTCLASS_P_H
#define VANTREL_QT_QTCLASS_P_H

#include "qt/types_p.h"

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <QMetaProperty>

#include <vector>

namespace Vantrel::QtWrapper {

class Handle;

/**
 * The class of the objects of one QMetaObject. What it needs to know of its
 * members is copied when it is made, because meta objects of plugins and of
 * other languages can end before the process does.
 */
class QtClass final : public Class
{
public:
    /** Registers itself under @p name. */
    QtClass(const char *name, const QMetaObject *metaObject, const QtClass *superClass);

    const QMetaObject *metaObject() const { return m_metaObject; }
    /** Whether the class was made for what is now at the place of its meta object. */
    bool isOf(const QMetaObject *metaObject) const;

    /** The index in the meta object of the signal behind an event of this class; -1 for others. */
    int signalIndex(const Event *event) const;
    const std::vector<Type> *signalArguments(const Event *event) const;

    SharedPtr<Object> invoke(int methodId, void *data, void **arguments,
                             const Class *type) override;
    bool setProperty(SharedPtr<Object> object, const Property *property,
                     SharedPtr<Object> value) const override;
    bool setProperty(int propertyId, void *data, void *value) const override;
    SharedPtr<Object> getProperty(int propertyId, void *data, const Class *type) override;
    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) override;

private:
    struct OwnMethod
    {
        QString name;
        /** In the meta object; -1 for what every QObject has besides. */
        int index = -1;
        SharedPtr<Object> (*function)(const SharedPtr<Object> &object,
                                      const ObjectList &arguments) = nullptr;
        Type result;
        std::vector<Type> parameters;
        QStringList parameterNames;
        mutable const Method *descriptor = nullptr;
    };
    struct OwnProperty
    {
        QString name;
        int flags = 0;
        Type type;
        QMetaProperty property;
        int index = -1;
        /** Reads values of the most frequent types without a QVariant; null for others. */
        SharedPtr<Object> (*read)(QObject *object, int index) = nullptr;
        mutable const Property *descriptor = nullptr;
    };
    struct OwnEvent
    {
        QString name;
        int index = -1;
        std::vector<Type> parameters;
        QStringList parameterNames;
        mutable const Event *descriptor = nullptr;
    };
    struct OwnEnum
    {
        QString name;
        bool isMask = false;
        std::vector<QByteArray> keys;
        std::vector<Enum::Item> items;
    };

    SharedPtr<Object> invoke(int methodId, SharedPtr<Object> object, const ObjectList &arguments,
                             const Method *method) override;
    bool setProperty(int propertyId, SharedPtr<Object> object, SharedPtr<Object> value,
                     const Property *property) const override;
    SharedPtr<Object> getProperty(int propertyId, SharedPtr<Object> object,
                                  const Property *property) override;
    Method *createMethod(int methodId) const override;
    Property *createProperty(int propertyId) const override;
    Event *createEvent(int eventId) const override;
    Enum *createEnum(int enumId) const override;

    void readMethods();
    void addObjectMethods();
    void readProperties();
    void readEvents();
    void readEnums();

    /** The own member behind a descriptor, or null. */
    template <class Table, class Descriptor>
    static const typename Table::value_type *own(const Table &table, const Descriptor *descriptor);
    const OwnProperty *usableProperty(Handle *handle, const Property *property) const;
    Signature signatureOf(const QString &name, const std::vector<Type> &types,
                          const QStringList &names) const;
    bool canCall(const OwnMethod &method) const;
    SharedPtr<Object> call(const OwnMethod &method, QObject *target,
                           const ObjectList &arguments) const;
    SharedPtr<Object> read(const OwnProperty &property, QObject *object) const;
    bool write(const OwnProperty &property, QObject *object, const SharedPtr<Object> &value) const;
    QString subject(const OwnProperty &property) const;

    const QMetaObject *const m_metaObject;
    const QByteArray m_metaName;
    const void *const m_stringData;
    std::vector<OwnMethod> m_methods;
    std::vector<OwnProperty> m_properties;
    mutable int m_propertyOffset = 0;
    std::vector<OwnEvent> m_events;
    std::vector<OwnEnum> m_enums;
};

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_QTCLASS_P_H
