#pragma once

#include "core/QorExport.h"

#include "QorObj.h"

#include <cstdint>
#include <new>

/// Circular doubly linked list of T values with a current position, a head and eight remembered positions.
/// Positions 0-7 of RememberAddress/ForgetAddress/GotoAddress are the remembered slots, 8 the current
/// position and 9 the head. The list never owns what its values point to.
template <typename T>
class Cycle : public QorObj
{
public:
    enum : unsigned long { kSlots = 8, kCurrent = 8, kHead = 9 };

    Cycle() = default;

    /// The copy holds the source's first value followed by the others in reverse order: each value,
    /// taken from the source's head onwards, is inserted before the current node.
    Cycle(const Cycle& other) : QorObj(other) { CopyFrom(other); }
    Cycle& operator=(const Cycle& other)
    {
        if (this != &other)
        {
            QorObj::operator=(other);
            Empty();
            CopyFrom(other);
        }
        return *this;
    }
    ~Cycle() { Empty(); }

    /// Releases every node. The remembered slots are cleared too: they could only name released nodes.
    void Empty()
    {
        Node* node = m_head;
        for (std::uint32_t i = 0; i < m_size && node; ++i)
        {
            Node* next = node->next;
            delete node;
            node = next;
        }
        m_head = m_current = nullptr;
        m_size = 0;
        for (Node*& slot : m_remembered)
            slot = nullptr;
    }

    /// Adds a node before the current one and makes it current; returns the new size.
    /// \note On allocation failure the code becomes 1 and the size is unchanged. Refused (size unchanged)
    ///       when the list is not empty but has no current position (after ForgetAddress(8)).
    unsigned long Insert(const T& info) { return Link(info, true); }
    /// Adds a node after the current one and makes it current; returns the new size.
    unsigned long Add(const T& info) { return Link(info, false); }

    /// Removes the current node; its next becomes current. Returns the new size (0 and nothing done when
    /// the list is empty or has no current position).
    unsigned long Remove()
    {
        Node* node = m_current;
        if (!node || m_size == 0)
            return m_size;
        for (Node*& slot : m_remembered)
            if (slot == node)
                slot = nullptr;
        --m_size;
        if (m_size == 0)
        {
            m_head = m_current = nullptr;
        }
        else
        {
            node->prev->next = node->next;
            node->next->prev = node->prev;
            m_current = node->next;
            if (m_head == node)
                m_head = node->next;
        }
        delete node;
        return m_size;
    }

    /// Address of the current value, null when there is no current node.
    T* GetInfo() { return m_current ? &m_current->info : nullptr; }
    /// Moves to the next node and returns its value's address; null when there is no current node.
    T* Next()
    {
        if (!m_current)
            return nullptr;
        m_current = m_current->next;
        return &m_current->info;
    }
    /// Moves to the previous node and returns its value's address; null when there is no current node.
    T* Prev()
    {
        if (!m_current)
            return nullptr;
        m_current = m_current->prev;
        return &m_current->info;
    }

    unsigned long GetSize() const { return m_size; }

    /// The current node as an opaque position for GotoAddress(void*).
    void* GetAddress() { return m_current; }
    /// Makes position current. False for null and for a position that is not a node of this list.
    char GotoAddress(void* position)
    {
        // Positions are compared as numbers: a position of a removed node is never followed.
        Node* node = Find(reinterpret_cast<std::uintptr_t>(position));
        if (!node)
            return 0;
        m_current = node;
        return 1;
    }
    /// Moves to remembered slot i (0-7), stays (8) or goes to the head (9); false for a null target or i > 9.
    char GotoAddress(unsigned long i)
    {
        Node* target = nullptr;
        if (i < kSlots)
            target = m_remembered[i];
        else if (i == kCurrent)
            target = m_current;
        else if (i == kHead)
            target = m_head;
        if (!target)
            return 0;
        m_current = target;
        return 1;
    }
    char GotoAddress(int i) { return GotoAddress(static_cast<unsigned long>(i)); }
    /// Remembers the current position in slot i (0-7); 8 changes nothing; false for i > 8.
    char RememberAddress(unsigned long i)
    {
        if (i > kCurrent)
            return 0;
        if (i < kSlots)
            m_remembered[i] = m_current;
        return 1;
    }
    /// Clears slot i (0-7) or, for 8, the current position; false for i > 8.
    char ForgetAddress(unsigned long i)
    {
        if (i > kCurrent)
            return 0;
        if (i < kSlots)
            m_remembered[i] = nullptr;
        else
            m_current = nullptr;
        return 1;
    }
    /// The head becomes the current node; the ring itself does not change.
    void MoveHeadHere()
    {
        if (m_current)
            m_head = m_current;
    }

private:
    struct Node
    {
        T info;
        Node* prev;
        Node* next;
    };

    unsigned long Link(const T& info, bool before)
    {
        if (m_size > 0 && !m_current)
            return m_size;
        Node* node = new (std::nothrow) Node{info, nullptr, nullptr};
        if (!node)
        {
            SetException(1);
            return m_size;
        }
        if (m_size == 0)
        {
            node->prev = node->next = node;
            m_head = node;
        }
        else
        {
            Node* after = before ? m_current : m_current->next;
            Node* previous = after->prev;
            node->prev = previous;
            node->next = after;
            previous->next = node;
            after->prev = node;
        }
        m_current = node;
        return ++m_size;
    }

    Node* Find(std::uintptr_t position) const
    {
        Node* node = m_head;
        for (std::uint32_t i = 0; position && i < m_size; ++i, node = node->next)
            if (reinterpret_cast<std::uintptr_t>(node) == position)
                return node;
        return nullptr;
    }

    void CopyFrom(const Cycle& other)
    {
        const Node* node = other.m_head;
        for (std::uint32_t i = 0; i < other.m_size; ++i, node = node->next)
            Insert(node->info);
    }

    Node* m_remembered[kSlots] = {};
    Node* m_current = nullptr;
    Node* m_head = nullptr;
    std::uint32_t m_size = 0;
};

/// The untyped cycle of void pointers on which the registries rest.
class QOR_API VoidPtrCycle : public Cycle<void*>
{
public:
    using Cycle<void*>::Insert;
    using Cycle<void*>::Add;

    unsigned long Insert(void** info) { return Insert(info ? *info : nullptr); }
    unsigned long Add(void** info) { return Add(info ? *info : nullptr); }

    /// The current value, null when there is no current node.
    void* GetInfoRef()
    {
        void** info = GetInfo();
        return info ? *info : nullptr;
    }
    void* NextRef()
    {
        void** info = Next();
        return info ? *info : nullptr;
    }
    void* PrevRef()
    {
        void** info = Prev();
        return info ? *info : nullptr;
    }
};
