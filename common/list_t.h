#pragma once

#include <cstdint>
#include <utility>

#include "common/export.h"

/**
 * An intrusive doubly linked list with two embedded sentinels.
 *
 * Elements carry the links, the item, the ownership of the item and an id of 16 bits; the list links elements
 * and never copies them. Ids 0 and 1 are the sentinels'; item elements count from 2 to 65535 and then from 2
 * again, so an id is unique only among fewer than 65534 living elements. Nothing here locks: a list belongs
 * to whoever guards it. A host may make elements and lists of its own, of its own items or of SwitchCache,
 * whose elements share one counter of ids with the library's.
 */

namespace datacache {

/** Stops the program, as a failed assertion does, for a destroyed element that a list still links. */
[[noreturn]] DC_EXPORT void elementStillLinked();

}  // namespace datacache

template <typename T>
class DC_EXPORT Element {
  public:
    /** An element that owns its item. */
    explicit Element(T* item) : Element(item, true) {}
    Element(T* item, bool deleteItem) : _item(item), _delete_item(deleteItem), _id(newId()) {}
    /** A sentinel with a fixed id: no item, and no id drawn. */
    explicit Element(int id) : _id(static_cast<uint16_t>(id)) {}
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    /** Deletes the item if the element owns it. An element that is still linked stops the program. */
    virtual ~Element() {
        if (_prev != nullptr && _next != nullptr) datacache::elementStillLinked();
        if (_delete_item) {
            delete _item;
            _item = nullptr;
        }
    }

    static Element* alloc(T* item, bool deleteItem) { return new Element(item, deleteItem); }

    uint16_t id() const { return _id; }
    /** What a const element leads to is const as well: its item and its neighbours. */
    const T* item() const { return _item; }
    T* item() { return _item; }
    void item(T* item) { _item = item; }
    /** The ownership of the item, for reading and writing. */
    bool& delete_item() { return _delete_item; }

    /** The neighbour, or null where the neighbour is a sentinel. */
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): an element that was freed is linked no more
    const Element* get_next() const { return _next != nullptr && _next->_next != nullptr ? _next : nullptr; }
    Element* get_next() { return const_cast<Element*>(std::as_const(*this).get_next()); }
    const Element* get_prev() const { return _prev != nullptr && _prev->_prev != nullptr ? _prev : nullptr; }
    Element* get_prev() { return const_cast<Element*>(std::as_const(*this).get_prev()); }

    /** Position in the list, counted from 1. */
    int index() const {
        int position = 1;
        for (const Element* e = get_prev(); e != nullptr; e = e->get_prev()) ++position;
        return position;
    }

    /** The id that the next item element takes; 0 stands for 2. */
    static uint16_t nextid;

  private:
    template <typename E>
    friend class List;

    static uint16_t newId() {
        if (nextid == 0)
            nextid = 2;  // after 65535, and at the start: the sentinels' ids 0 and 1 are never drawn
        return nextid++;
    }

    T* _item = nullptr;
    bool _delete_item = true;
    uint16_t _id;
    Element* _prev = nullptr;
    Element* _next = nullptr;
};

template <typename T>
uint16_t Element<T>::nextid = 0;

template <typename E>
class List {
  public:
    List() {
        _headSentinel._next = &_tailSentinel;
        _tailSentinel._prev = &_headSentinel;
    }
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    /** Deletes every element; the items go with the elements that own theirs. */
    ~List() { purge_list(false); }

    /** Appends an unlinked element. */
    void add(E* element) { link(element, _tailSentinel._prev, &_tailSentinel); }
    /** Inserts before the first item element, or appends to an empty list. */
    void add_head(E* element) { link(element, &_headSentinel, _headSentinel._next); }
    /** Inserts beside an element of this list. What `head` or `tail` points at moves with the insertion. */
    void insert_before(E* element, E* before) {
        if (before == _head) _head = element;
        link(element, before->_prev, before);
    }
    void insert_after(E* element, E* after) {
        if (after == _tail) _tail = element;
        link(element, after, after->_next);
    }

    /** Unlinks an element of this list without deleting it. One that is not linked is left alone. */
    void remove(E* element) {
        if (element->_prev == nullptr || element->_next == nullptr) return;
        element->_prev->_next = element->_next;
        element->_next->_prev = element->_prev;
        element->_prev = nullptr;
        element->_next = nullptr;
        --_count;
    }
    /** Unlinks and returns the first element with this id, or returns null. */
    E* remove(unsigned short id) {
        E* element = find(id);
        if (element != nullptr) remove(element);
        return element;
    }
    /** The first item element with this id; null for the sentinels' ids and where there is none. */
    const E* find(unsigned short id) const {
        if (id < 2) return nullptr;
        const E* element = get_first();
        while (element != nullptr && element->id() != id) element = element->get_next();
        return element;
    }
    E* find(unsigned short id) { return const_cast<E*>(std::as_const(*this).find(id)); }

    const E* get_first() const { return _headSentinel.get_next(); }
    E* get_first() { return _headSentinel.get_next(); }
    const E* get_last() const { return _tailSentinel.get_prev(); }
    E* get_last() { return _tailSentinel.get_prev(); }
    bool is_empty() const { return _count == 0; }
    uint32_t size() const { return _count; }

    /** Moves every element of `other`, first to last, to the end of this list. */
    void take(List* other) {
        if (other == this) return;  // a list that takes itself would go round for ever
        while (E* element = other->get_first()) {
            other->remove(element);
            add(element);
        }
    }

    /** Deletes every element, first to last; with `deleteItems` the items go too, whoever owned them. */
    void purge_list(bool deleteItems) {
        while (E* element = get_first()) {
            remove(element);
            if (deleteItems) element->delete_item() = true;
            delete element;
        }
    }

  private:
    void link(E* element, E* prev, E* next) {
        element->_prev = prev;
        element->_next = next;
        if (prev != nullptr) prev->_next = element;
        if (next != nullptr) next->_prev = element;
        ++_count;
    }

    uint32_t _count = 0;
    E* _head = &_headSentinel;
    E* _tail = &_tailSentinel;
    E _headSentinel{0};
    E _tailSentinel{1};
};
