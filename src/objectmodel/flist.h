#ifndef VANTREL_FLIST_H
#define VANTREL_FLIST_H

#include "objectmodel/blockpool.h"

#include <initializer_list>
#include <iterator>
#include <list>
#include <utility>

namespace Vantrel {

/**
 * Doubly linked list: the arguments of a Signature, the overloads of a
 * MethodList. Element access by index walks the list.
 */
template <class T>
class FList
{
public:
    using value_type = T;
    using Items = std::list<T, PoolAllocator<T>>;
    using iterator = typename Items::iterator;
    using const_iterator = typename Items::const_iterator;

    FList() = default;
    FList(std::initializer_list<T> items) : m_items(items) {}

    int size() const { return static_cast<int>(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }

    /** @p index must be at least 0 and less than size(). */
    const T &at(int index) const { return *std::next(m_items.begin(), index); }
    const T &operator[](int index) const { return at(index); }
    const T &first() const { return m_items.front(); }
    const T &last() const { return m_items.back(); }

    void append(T item) { m_items.push_back(std::move(item)); }
    void prepend(T item) { m_items.push_front(std::move(item)); }
    FList &operator<<(T item)
    {
        append(std::move(item));
        return *this;
    }
    /** Moves the items of @p other to the end of this list. */
    void append(FList &&other) { m_items.splice(m_items.end(), other.m_items); }
    iterator erase(const_iterator position) { return m_items.erase(position); }
    void clear() { m_items.clear(); }

    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }

    friend bool operator==(const FList &a, const FList &b) { return a.m_items == b.m_items; }
    friend bool operator!=(const FList &a, const FList &b) { return a.m_items != b.m_items; }

private:
    Items m_items;
};

} // namespace Vantrel

#endif // VANTREL_FLIST_H
