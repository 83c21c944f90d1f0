// Circular doubly linked lists with an embedded sentinel.
//
//      list object              element            element
//     +-----------+          +-----------+      +-----------+
//  +->| next      |--------->| next      |----->| next      |--+   an empty list
//  |  | prev      |<---------| prev      |<-----| prev      |  |   points at itself
//  |  +-----------+          +-----------+      | value     |  |   both ways
//  |                                            +-----------+  |
//  +-----------------------------------------------------------+
//
// Nodes are intrusive: an object derived from the element type is linked where it lies, without an
// allocation, and unlinks itself in constant time. Lists do not own their elements: whoever made an
// element deletes it, or asks the list to (`List::remove`, `List::clear`).
#pragma once

/// The two links of a node. Null while the node is in no list.
struct VoidListElement {
    VoidListElement* next = nullptr;
    VoidListElement* prev = nullptr;

    VoidListElement() = default;
    // The neighbours of a node point at it: a copy would be in no list.
    VoidListElement(const VoidListElement&) = delete;
    VoidListElement& operator=(const VoidListElement&) = delete;

    /// Takes the node out of the list it is in.
    void remove() {
        next->prev = prev;
        prev->next = next;
        next = nullptr;
        prev = nullptr;
    }

protected:
    friend class VoidList;
    VoidListElement(VoidListElement* n, VoidListElement* p) : next(n), prev(p) {}
    ~VoidListElement() = default;
};

/// A list of bare nodes.
class VoidList : private VoidListElement {
public:
    using Element = VoidListElement;

    VoidList() : Element(this, this) {}

    /// Links `element`, which must be in no list, at the tail.
    void append(Element* element) {
        element->next = this;
        element->prev = prev;
        prev->next = element;
        prev = element;
    }
    /// Unlinks `element` and returns it; does not free it.
    static Element* remove(Element* element) {
        element->remove();
        return element;
    }

    /// The first node, or the sentinel when there is none.
    Element* begin() const { return next; }
    /// The sentinel: behind the last node.
    Element* end() const { return const_cast<VoidList*>(this); }
    bool empty() const { return begin() == end(); }
};

/// A list whose nodes carry a value each.
template <class T>
class List {
public:
    struct Element : VoidList::Element {
        Element() = default;
        explicit Element(const T& v) : value(v) {}
        T value{};
    };

    /// Walks the elements. A link must not be read after its element is gone: step first, then
    /// remove.
    class Iterator {
    public:
        explicit Iterator(VoidList::Element* node) : node_(node) {}
        /// The element; not on the end, which is a bare sentinel.
        Element* operator*() const { return static_cast<Element*>(node_); }
        Iterator& operator++() {
            node_ = node_->next;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        VoidList::Element* node_;
    };

    List() = default;

    /// Stores `value` in `element`, which must be in no list, and links it at the tail. The caller
    /// keeps the ownership.
    void append(Element* element, const T& value) {
        element->value = value;
        nodes_.append(element);
    }
    /// Links a new element with `value` at the tail; `remove` or `clear` deletes it.
    Element* append(const T& value) {
        auto* element = new Element(value);
        nodes_.append(element);
        return element;
    }
    /// Unlinks and deletes an element made by `append(value)`.
    void remove(Element* element) { delete remove_nodelete(element); }
    /// Unlinks `element` and returns it; does not free it.
    Element* remove_nodelete(Element* element) {
        nodes_.remove(element);
        return element;
    }
    /// Removes every element, the first one first; all must have been made by `append(value)`.
    void clear() {
        while (!empty()) {
            remove(*begin());
        }
    }

    Iterator begin() const { return Iterator(nodes_.begin()); }
    Iterator end() const { return Iterator(nodes_.end()); }
    bool empty() const { return nodes_.empty(); }

private:
    VoidList nodes_;
};
