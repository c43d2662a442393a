#include "objectmodel/class.h"

#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/object.h"
#include "objectmodel/objectdelegates_p.h"
#include "objectmodel/recursion_p.h"

#include <algorithm>
#include <cstring>

namespace Vantrel {

namespace {

/** Fills a table that is still empty; an undeclared count leaves it empty. */
template <class T, class Create>
void buildTable(QVector<const T *> &table, int count, Create create)
{
    if (!table.isEmpty() || count <= 0) {
        return;
    }
    table.resize(count);
    for (int i = 0; i < count; ++i) {
        const T *entry = create(i);
        table[i] = entry;
    }
}

/** The member with an id of the hierarchy: each class knows its own, behind those of its super
 * class. */
template <class T>
const T *memberById(const Class *c, int id, Class::OffsetType kind,
                    QVector<const T *> ClassPrivate::*table,
                    void (ClassPrivate::*build)(const Class *))
{
    for (; c && id >= 0; c = c->super()) {
        ClassPrivate *d = ClassPrivate::get(c);
        if ((d->*table).isEmpty()) {
            (d->*build)(c);
        }
        // An undeclared ancestor makes the offset negative.
        const qint64 index = qint64(id) - c->superClassOffset(kind);
        if (index >= 0) {
            return index < (d->*table).size() ? (d->*table).at(int(index)) : nullptr;
        }
    }
    return nullptr;
}

/** Most names differ in length already, and this runs for every member of a class. */
bool isSameName(const QString &a, const QString &b)
{
    const int size = a.size();
    return size == b.size()
        && (size == 0
            || (*a.constData() == *b.constData()
                && std::memcmp(a.constData(), b.constData(), size * sizeof(QChar)) == 0));
}

template <class T>
const T *memberByName(const Class *c, const QString &name, QVector<const T *> ClassPrivate::*table,
                      void (ClassPrivate::*build)(const Class *))
{
    for (; c; c = c->super()) {
        ClassPrivate *d = ClassPrivate::get(c);
        if ((d->*table).isEmpty()) {
            (d->*build)(c);
        }
        for (const T *member : qAsConst(d->*table)) {
            if (member && isSameName(member->name(), name)) {
                return member;
            }
        }
    }
    return nullptr;
}

/** Tells most names apart, so that few of the many properties of a class are really compared. */
quint32 propertyKey(const QString &name)
{
    const quint32 size = static_cast<quint32>(name.size());
    return size == 0 ? 0
                     : size << 16 ^ name.at(0).unicode() << 8 ^ name.at(name.size() - 1).unicode();
}

/** Type names nested deeper than this, which nobody writes, are left as they are. */
constexpr int maximumTypeDepth = 256;

/** A type name, and the qualifiers of one level that stood around it. */
struct TypeSpelling
{
    explicit TypeSpelling(const QString &type);

    bool isQualified() const { return isConst || isReference || isPointer; }
    QString qualified(const QString &name) const;

    QString bare;
    bool isPointer;
    bool isReference;
    bool isConst;
};

/** Takes @p sign off the end and the beginning of @p text. */
bool takeSign(QString &text, QChar sign)
{
    const int size = text.size();
    if (text.endsWith(sign)) {
        text.chop(1);
    }
    if (text.startsWith(sign)) {
        text.remove(0, 1);
    }
    return text.size() < size;
}

bool takeConst(QString &text)
{
    const QLatin1String word("const");
    const bool isThere = text.startsWith(word);
    if (isThere) {
        text = text.mid(word.size()).trimmed();
    }
    return isThere;
}

TypeSpelling::TypeSpelling(const QString &type)
    : bare(type), isPointer(takeSign(bare, u'*')), isReference(takeSign(bare, u'&')),
      isConst(takeConst(bare))
{}

QString TypeSpelling::qualified(const QString &name) const
{
    return QLatin1String(isConst ? "const " : "") + name + QLatin1String(isReference ? "&" : "")
        + QLatin1String(isPointer ? "*" : "");
}

/** "List<A,B>" with A and B mapped; @p type as it is when it has no template arguments. */
template <class Map>
QString withMappedArguments(const QString &type, Map map)
{
    const int open = type.indexOf(u'<');
    const int close = type.lastIndexOf(u'>');
    if (open == -1 || close < open) {
        return type;
    }
    QStringList arguments = type.mid(open + 1, close - open - 1).split(u',');
    std::transform(arguments.cbegin(), arguments.cend(), arguments.begin(), map);
    return type.left(open) + u'<' + arguments.join(u',') + u'>';
}

// An address to compare with, known before any constructor runs.
char uninitializedSuperClass;

} // namespace

Class *Class::uninitialized = reinterpret_cast<Class *>(&uninitializedSuperClass);

void ClassPrivate::setName(const char *text)
{
    name = QByteArray(text);
    nameText = QString::fromUtf8(text);
    ObjectDelegates::changed();
}

void ClassPrivate::buildMethods(const Class *q)
{
    buildTable(methods, numOwnMethods,
               [q, offset = q->superClassOffset(Class::MethodOffset)](int i) {
                   return q->createMethod(offset + i);
               });
}

void ClassPrivate::buildEvents(const Class *q)
{
    buildTable(events, numOwnEvents, [q, offset = q->superClassOffset(Class::EventOffset)](int i) {
        return q->createEvent(offset + i);
    });
}

void ClassPrivate::buildEnums(const Class *q)
{
    buildTable(enums, numOwnEnums, [q, offset = q->superClassOffset(Class::EnumOffset)](int i) {
        return q->createEnum(offset + i);
    });
}

void ClassPrivate::buildConstructors(const Class *q)
{
    buildTable(constructors, numOwnConstructors, [q](int i) { return q->createConstructor(i); });
}

void ClassPrivate::buildProperties(const Class *q)
{
    if (numOwnProperties < 0) {
        return;
    }
    countDelegateProperties();
    const int offset = q->superClassOffset(Class::PropertyOffset);
    buildTable(properties, numOwnProperties + numDelegateProperties, [this, q, offset](int i) {
        const Property *property = nullptr;
        if (i < numOwnProperties) {
            property = q->createProperty(offset + i);
        } else if (const PropertyDeclaration *declaration =
                       propertyDelegate->propertyDeclaration(i - numOwnProperties)) {
            property = new Property(offset + i, q, declaration);
        }
        return property;
    });
}

const Property *ClassPrivate::findProperty(const QString &wanted, quint32 key)
{
    if (propertyKeys.size() != properties.size()) {
        propertyKeys.clear();
        for (const Property *property : qAsConst(properties)) {
            propertyKeys.append(property ? propertyKey(property->name()) : 0);
        }
    }
    const quint32 *keys = propertyKeys.constData();
    for (int i = 0; i < properties.size(); ++i) {
        const Property *property = keys[i] == key ? properties.at(i) : nullptr;
        if (property && isSameName(property->name(), wanted)) {
            return property;
        }
    }
    return nullptr;
}

void ClassPrivate::setupPropertyDelegate()
{
    if (propertyDelegate || propertyDelegateLooked) {
        return;
    }
    propertyDelegateLooked = true;
    propertyDelegate = DelegateFactory::self()->find<StaticPropertyDelegate>(nameText);
}

void ClassPrivate::countDelegateProperties()
{
    setupPropertyDelegate();
    if (numDelegateProperties == -1) {
        numDelegateProperties =
            propertyDelegate ? std::max(0, propertyDelegate->numPropertyDeclarations()) : 0;
    }
}

void ClassPrivate::setupCastDelegate(const Class *q)
{
    if (castDelegate || castDelegateLooked) {
        return;
    }
    castDelegateLooked = true;
    castDelegate = DelegateFactory::self()->find<CastDelegate>(q);
}

Class::Class() : d(new ClassPrivate) {}

Class::Class(const char *name, bool registerClass)
    : Class(name, Inspector::self()->globalNamespace(), registerClass)
{}

Class::Class(const char *name, Namespace *nameSpace, bool registerClass) : d(new ClassPrivate)
{
    d->setName(name);
    d->nameSpace = nameSpace;
    if (registerClass) {
        this->registerClass();
    }
}

Class::~Class()
{
    delete d;
}

void Class::registerClass()
{
    if (d->nameSpace) {
        d->nameSpace->registerClass(this);
    }
    d->id = Inspector::self()->registerClass(this);
}

QString Class::className() const
{
    return d->nameText;
}

int Class::id() const
{
    return d->id;
}

const Namespace *Class::nameSpace() const
{
    return d->nameSpace;
}

Namespace *Class::nameSpace()
{
    return d->nameSpace;
}

QString Class::fullyQualifiedClassName() const
{
    QString text = className();
    for (const Namespace *n = d->nameSpace; n && n->enclosingNamespace();
         n = n->enclosingNamespace()) {
        text.prepend(n->name() + QLatin1String("::"));
    }
    return text;
}

void Class::addNature(int nature)
{
    d->natures |= 1u << (nature & 31);
}

bool Class::hasNature(int nature) const
{
    return d->natures & (1u << (nature & 31));
}

quint32 Class::natures() const
{
    return d->natures;
}

const Class *Class::super() const
{
    if (d->superClass == uninitialized) {
        mutableSelf()->initSuperClass();
    }
    return d->superClass == uninitialized ? nullptr : d->superClass;
}

void Class::setSuperClass(const Class *superClass)
{
    // A circle would have no end for whoever walks along the super classes.
    for (const Class *c = superClass; c && c != uninitialized; c = c->d->superClass) {
        if (c == this) {
            fatalError("Cannot make Class %s the super class of Class %s, from which it derives",
                       superClass->d->name.constData(), d->name.constData());
        }
    }
    d->superClass = superClass;
    ObjectDelegates::changed();
}

void Class::initSuperClass()
{
    setSuperClass(nullptr);
}

bool Class::isSubClassOf(const Class *other) const
{
    return isSubClass(this, other);
}

bool Class::isSubClass(const Class *derived, const Class *base)
{
    for (; derived; derived = derived->super()) {
        if (derived == base) {
            return true;
        }
    }
    return false;
}

int Class::inheritanceDepth(const Class *other) const
{
    return inheritanceDistance(this, other);
}

int Class::inheritanceDistance(const Class *derived, const Class *base)
{
    for (int steps = 0; derived; derived = derived->super(), ++steps) {
        if (derived == base) {
            return steps;
        }
    }
    return -1;
}

int Class::superClassOffset(OffsetType type) const
{
    const Class *superClass = super();
    if (!superClass) {
        return 0;
    }
    switch (type) {
    case PropertyOffset:
        return superClass->numProperties();
    case MethodOffset:
        return superClass->numMethods();
    case EventOffset:
        return superClass->numEvents();
    case EnumOffset:
        return superClass->numEnums();
    case ConstructorOffset:
        break;
    }
    return 0;
}

int Class::numMethods() const
{
    return superClassOffset(MethodOffset) + d->numOwnMethods;
}

int Class::numProperties() const
{
    d->countDelegateProperties();
    return superClassOffset(PropertyOffset) + d->numOwnProperties + d->numDelegateProperties;
}

int Class::numPropertiesInternal() const
{
    return d->numOwnProperties + superClassOffset(PropertyOffset);
}

int Class::numEvents() const
{
    return d->numOwnEvents == -1 ? 0 : superClassOffset(EventOffset) + d->numOwnEvents;
}

int Class::numEnums() const
{
    return superClassOffset(EnumOffset) + d->numOwnEnums;
}

int Class::numConstructors() const
{
    super();
    return d->numOwnConstructors;
}

void Class::setNumMethods(int count)
{
    d->numOwnMethods = count;
}

void Class::setNumConstructors(int count)
{
    d->numOwnConstructors = count;
}

void Class::setNumProperties(int count)
{
    d->numOwnProperties = count;
}

void Class::setNumEvents(int count)
{
    d->numOwnEvents = count;
}

void Class::setNumEnums(int count)
{
    d->numOwnEnums = count;
}

const Method *Class::method(int methodId) const
{
    return memberById(this, methodId, MethodOffset, &ClassPrivate::methods,
                      &ClassPrivate::buildMethods);
}

const Property *Class::property(int propertyId) const
{
    return memberById(this, propertyId, PropertyOffset, &ClassPrivate::properties,
                      &ClassPrivate::buildProperties);
}

const Event *Class::event(int eventId) const
{
    return memberById(this, eventId, EventOffset, &ClassPrivate::events,
                      &ClassPrivate::buildEvents);
}

const Enum *Class::enumerator(int enumId) const
{
    return memberById(this, enumId, EnumOffset, &ClassPrivate::enums, &ClassPrivate::buildEnums);
}

const Constructor *Class::constructor(int index) const
{
    d->buildConstructors(this);
    return d->constructors.value(index);
}

MethodList Class::methods(const QString &name) const
{
    MethodList list;
    for (const Class *c = this; c; c = c->super()) {
        c->d->buildMethods(c);
        for (const Method *method : qAsConst(c->d->methods)) {
            if (method && isSameName(method->name(), name)) {
                list.append(method);
            }
        }
    }
    return list;
}

const Property *Class::property(const QString &name) const
{
    const quint32 key = propertyKey(name);
    for (const Class *c = this; c; c = c->super()) {
        if (c->d->properties.isEmpty()) {
            c->d->buildProperties(c);
        }
        if (const Property *found = c->d->findProperty(name, key)) {
            return found;
        }
    }
    return nullptr;
}

const Event *Class::event(const QString &name) const
{
    return memberByName(this, name, &ClassPrivate::events, &ClassPrivate::buildEvents);
}

const Enum *Class::enumerator(const QString &name) const
{
    return memberByName(this, name, &ClassPrivate::enums, &ClassPrivate::buildEnums);
}

void Class::lateAddMethod(Method *method) const
{
    if (!method) {
        return;
    }
    ++d->numOwnMethods;
    if (!d->methods.isEmpty()) {
        method->setId(numMethods() - 1);
        d->methods.append(method);
    }
}

void Class::lateAddProperty(Property *property)
{
    if (!property) {
        return;
    }
    const int ownIndex = d->numOwnProperties++;
    if (d->properties.isEmpty()) {
        return;
    }
    d->properties.insert(ownIndex, property);
    for (int i = ownIndex + 1; i < d->properties.size(); ++i) {
        if (const Property *moved = d->properties[i]) {
            const_cast<Property *>(moved)->setId(moved->id() + 1);
        }
    }
}

void Class::lateAddEnum(Enum *enumerator)
{
    if (!enumerator) {
        return;
    }
    ++d->numOwnEnums;
    if (!d->enums.isEmpty()) {
        d->enums.append(enumerator);
    }
}

void Class::addInterface(const Interface *iface)
{
    const QByteArray text = iface->interfaceName();
    const QString name = QString::fromUtf8(text);
    if (interfaceClass(name)) {
        fatalError("Cannot add duplicate Interface %s to Class %s", text.constData(),
                   d->name.constData());
    }
    d->interfaces.insert(name, iface);
}

const Interface *Class::interfaceClass(const QString &name) const
{
    for (const Class *c = this; c; c = c->super()) {
        if (const Interface *iface = c->d->interfaces.value(name)) {
            return iface;
        }
    }
    return nullptr;
}

SharedPtr<Object> Class::createNull() const
{
    return Inspector::self()->createNull(this);
}

Constructor *Class::createConstructor(int) const
{
    return nullptr;
}

Method *Class::createMethod(int) const
{
    return nullptr;
}

Property *Class::createProperty(int) const
{
    return nullptr;
}

Event *Class::createEvent(int) const
{
    return nullptr;
}

Enum *Class::createEnum(int) const
{
    return nullptr;
}

SharedPtr<Object> Class::wrap(void *data, const ObjectAttribute &attribute)
{
    return SharedPtr<Object>(new Object(data, this, attribute));
}

SharedPtr<Object> Class::wrap(void *data, const ObjectAttribute &attribute) const
{
    return mutableSelf()->wrap(data, attribute);
}

void Class::deleteObjectData(void *data, const ObjectAttribute &) const
{
    if (d->deleteNative) {
        d->deleteNative(data);
    }
}

QString Class::realType(const QString &type)
{
    const RecursionDepth<Class> depth;
    if (depth.value() > maximumTypeDepth) {
        return type;
    }
    const auto normal = [this](const QString &part) { return realType(part); };
    const TypeSpelling spelling(type);
    return spelling.isQualified() ? spelling.qualified(normal(spelling.bare))
                                  : withMappedArguments(type, normal);
}

QString Class::realType(const QString &type) const
{
    return mutableSelf()->realType(type);
}

Interface::Interface(const char *name) : Class(name, false) {}

Interface::Interface(const char *name, Namespace *nameSpace) : Class(name, nameSpace, false) {}

Interface::~Interface() = default;

QByteArray Interface::interfaceName() const
{
    return className().toUtf8();
}

} // namespace Vantrel
