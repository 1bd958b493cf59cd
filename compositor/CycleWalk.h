#pragma once

#include "qor/core.h"

#include <cstdint>

// Walks over the registries' lists. Each leaves the list's current position on the value it stops at, so
// that the caller can Remove() it at once; the visitor must not walk the same list.
namespace qor::detail
{
/// The first value, from the head onwards, for which found(value) is true; null when none.
template <typename T, typename Found> T* FindForward(Cycle<T>& list, Found found)
{
    const unsigned long size = list.GetSize();
    if (size == 0 || !list.GotoAddress(static_cast<unsigned long>(Cycle<T>::kHead)))
        return nullptr;
    T* value = list.GetInfo();
    for (unsigned long i = 0; i < size && value; ++i, value = list.Next())
        if (found(*value))
            return value;
    return nullptr;
}

/// The first value, from the last one back to the head, for which found(value) is true; null when none.
template <typename T, typename Found> T* FindBackward(Cycle<T>& list, Found found)
{
    const unsigned long size = list.GetSize();
    if (size == 0 || !list.GotoAddress(static_cast<unsigned long>(Cycle<T>::kHead)))
        return nullptr;
    for (unsigned long i = 0; i < size; ++i)
    {
        T* value = list.Prev();
        if (value && found(*value))
            return value;
    }
    return nullptr;
}

/// Calls visit(value) for every value from the head onwards.
template <typename T, typename Visit> void ForEach(Cycle<T>& list, Visit visit)
{
    FindForward(list,
                [&](T& value)
                {
                    visit(value);
                    return false;
                });
}

/// Appends value after the last one; the address of the stored copy, null when the node could not be made
/// (the list's error code is then 1).
template <typename T> T* Append(Cycle<T>& list, const T& value)
{
    const unsigned long before = list.GetSize();
    if (before > 0 && !list.GotoAddress(static_cast<unsigned long>(Cycle<T>::kHead)))
        return nullptr;
    // Inserting before the head puts the new node last in the ring.
    if (list.Insert(value) != before + 1)
        return nullptr;
    return list.GetInfo();
}

/// The guider of a registry record: its number, its address, tag 0.
inline QorGuider MakeGuider(unsigned long id, void* record)
{
    QorGuider guider;
    guider.identifier = static_cast<std::uint32_t>(id);
    guider.object = record;
    return guider;
}
} // namespace qor::detail
