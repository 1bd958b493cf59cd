#pragma once

#include "core/QorExport.h"

#include "QorObj.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>

/// Growable array of default-constructed T with a size, a capacity and a grow step (default 10).
/// Storage is allocated and destroyed as a whole; indexing is not bounds-checked.
/// \note Sizes are 32-bit: a request beyond 4294967295 elements fails like an allocation (code 1).
template <typename T>
class Array : public QorObj
{
public:
    enum : std::uint32_t { kDefaultGrow = 10 };

    Array() = default;

    /// n copies of value; n = 0 gives an empty array. Allocation failure: code 1, size, max and grow 0.
    Array(const T& value, unsigned long n)
    {
        if (n == 0)
            return;
        if (!Allocate(n))
        {
            FailAll();
            return;
        }
        m_size = m_maxSize = static_cast<std::uint32_t>(n);
        Fill(value);
    }

    /// The first n elements of src (as Reset).
    Array(const T* src, unsigned long n) { Reset(src, n); }

    /// Copies the elements; the grow step is not copied (it becomes 10).
    Array(const Array& other) : QorObj(other)
    {
        if (!Allocate(other.m_size))
        {
            FailAll();
            return;
        }
        std::copy(other.m_data, other.m_data + other.m_size, m_data);
        m_size = m_maxSize = other.m_size;
    }

    /// Takes other's storage and grow step; other is left empty.
    Array(Array&& other) noexcept
        : QorObj(other), m_size(other.m_size), m_maxSize(other.m_maxSize), m_grow(other.m_grow), m_data(other.m_data)
    {
        other.m_data = nullptr;
        other.m_size = other.m_maxSize = 0;
    }

    ~Array() { delete[] m_data; }

    /// The array becomes the one element value.
    Array& operator=(const T& value)
    {
        if (ReSize(1, false))
            m_data[0] = value;
        return *this;
    }

    /// Copies the elements and keeps this array's grow step. Assigning an array to itself changes nothing.
    Array& operator=(const Array& other)
    {
        if (this == &other)
            return *this;
        T* fresh = NewStorage(other.m_size);
        if (!fresh)
        {
            SetException(1);
            delete[] m_data;
            m_data = nullptr;
            m_size = m_maxSize = 0;
            return *this;
        }
        std::copy(other.m_data, other.m_data + other.m_size, fresh);
        delete[] m_data;
        m_data = fresh;
        m_size = m_maxSize = other.m_size;
        return *this;
    }

    /// Takes other's storage and keeps this array's grow step; other is left empty.
    Array& operator=(Array&& other) noexcept
    {
        if (this != &other)
        {
            delete[] m_data;
            m_data = other.m_data;
            m_size = other.m_size;
            m_maxSize = other.m_maxSize;
            other.m_data = nullptr;
            other.m_size = other.m_maxSize = 0;
        }
        return *this;
    }

    /// Same size and equal elements; two empty arrays are equal.
    char operator==(const Array& other) const
    {
        if (m_size != other.m_size)
            return 0;
        for (std::uint32_t i = 0; i < m_size; ++i)
            if (!(m_data[i] == other.m_data[i]))
                return 0;
        return 1;
    }
    char operator!=(const Array& other) const { return !(*this == other); }

    const T& operator[](unsigned long i) const { return m_data[i]; }
    T& operator[](unsigned long i) { return m_data[i]; }
    /// The storage, null when nothing is allocated.
    operator T*() const { return m_data; }

    unsigned long GetSize() const { return m_size; }
    unsigned long GetMaxSize() const { return m_maxSize; }
    unsigned long GetGrow() const { return m_grow; }
    char IsEmpty() const { return m_size == 0; }
    /// Sets the grow step; 0 is ignored.
    void SetGrow(unsigned long g)
    {
        if (g != 0 && g <= UINT32_MAX)
            m_grow = static_cast<std::uint32_t>(g);
    }

    /// Replaces the content with the first n elements of src; grow becomes 10.
    /// Failure: code 1, size, max and grow 0, storage null, false.
    char Reset(const T* src, unsigned long n)
    {
        T* fresh = (src || n == 0) ? NewStorage(n) : nullptr;
        if (!fresh)
        {
            delete[] m_data;
            m_data = nullptr;
            FailAll();
            return 0;
        }
        std::copy(src, src + n, fresh);
        delete[] m_data;
        m_data = fresh;
        m_size = m_maxSize = static_cast<std::uint32_t>(n);
        m_grow = kDefaultGrow;
        return 1;
    }

    /// Resizes to exactly n elements. keep copies the first min(size, n); without keep the content is
    /// value-initialised. n = 0 frees the storage. Failure: code 1, false, the array unchanged.
    char ReSize(unsigned long n, char keep)
    {
        if (n == 0)
        {
            delete[] m_data;
            m_data = nullptr;
            m_size = m_maxSize = 0;
            return 1;
        }
        if (n == m_size && keep)
            return 1;
        T* fresh = NewStorage(n);
        if (!fresh)
        {
            SetException(1);
            return 0;
        }
        if (keep && m_data)
            std::copy(m_data, m_data + std::min<unsigned long>(m_size, n), fresh);
        delete[] m_data;
        m_data = fresh;
        m_size = m_maxSize = static_cast<std::uint32_t>(n);
        return 1;
    }

    void Empty() { ReSize(0, 0); }

    /// Shrinks the capacity to the size.
    void FreeExtra()
    {
        if (m_size == m_maxSize || !m_data)
            return;
        T* fresh = NewStorage(m_size);
        if (!fresh)
        {
            SetException(1);
            return;
        }
        std::copy(m_data, m_data + m_size, fresh);
        delete[] m_data;
        m_data = fresh;
        m_maxSize = m_size;
    }

    /// Exchanges elements i and j. Index 0 is never swapped: Swap(0, x) returns false.
    char Swap(unsigned long i, unsigned long j)
    {
        if (i == 0 || j == 0 || i >= m_size || j >= m_size)
            return 0;
        using std::swap;
        swap(m_data[i], m_data[j]);
        return 1;
    }

    char Append(const T& value) { return Append(&value, 1); }
    char Append(const Array& other) { return Append(other.m_data, other.m_size); }

    /// Appends n elements. When the capacity is short it becomes size + n rounded up to the grow step.
    char Append(const T* src, unsigned long n)
    {
        if (n == 0)
            return 1;
        if (!src)
            return 0;
        if (n > UINT32_MAX - m_size)
        {
            // The size would not fit its 32 bits: refused like an allocation.
            SetException(1);
            return 0;
        }
        const std::uint64_t grow = m_grow ? m_grow : 1;
        const std::uint64_t step = (n + grow - 1) / grow * grow;
        std::unique_ptr<T[]> aliased;
        if (IsOwnStorage(src))
        {
            // The source lies in this array: copy it out before the storage may move.
            aliased.reset(new (std::nothrow) T[n]);
            if (!aliased)
            {
                SetException(1);
                return 0;
            }
            std::copy(src, src + n, aliased.get());
            src = aliased.get();
        }
        if (m_maxSize - m_size < n)
        {
            const std::uint64_t newMax = std::uint64_t(m_size) + step;
            T* fresh = newMax <= UINT32_MAX ? NewStorage(newMax) : nullptr;
            if (!fresh)
            {
                SetException(1);
                return 0;
            }
            if (m_data)
                std::copy(m_data, m_data + m_size, fresh);
            delete[] m_data;
            m_data = fresh;
            m_maxSize = static_cast<std::uint32_t>(newMax);
        }
        std::copy(src, src + n, m_data + m_size);
        m_size += static_cast<std::uint32_t>(n);
        return 1;
    }

    /// Removes element i, moving the later ones down; the capacity is kept.
    char Remove(unsigned long i)
    {
        if (i >= m_size)
            return 0;
        std::move(m_data + i + 1, m_data + m_size, m_data + i);
        --m_size;
        return 1;
    }
    /// Removes the last element; false on an empty array.
    char Remove() { return Remove(static_cast<unsigned long>(m_size) - 1); }

    /// Sets every element in use to value.
    void Fill(const T& value) { std::fill(m_data, m_data + m_size, value); }

private:
    static T* NewStorage(std::uint64_t n)
    {
        if (n > UINT32_MAX)
            return nullptr;
        return new (std::nothrow) T[static_cast<std::size_t>(n)]();
    }
    bool Allocate(std::uint64_t n)
    {
        m_data = NewStorage(n);
        return m_data != nullptr;
    }
    void FailAll()
    {
        SetException(1);
        m_size = m_maxSize = m_grow = 0;
    }
    bool IsOwnStorage(const T* p) const
    {
        std::less_equal<const T*> le;
        std::less<const T*> lt;
        return m_data && le(m_data, p) && lt(p, m_data + m_maxSize);
    }

    std::uint32_t m_size = 0;
    std::uint32_t m_maxSize = 0;
    std::uint32_t m_grow = kDefaultGrow;
    T* m_data = nullptr;
};

/// The growable byte array: the storage of QorString.
using UCharArray = Array<unsigned char>;

/// Index of an element equal to key in the ascending values, or -1.
/// \note For more than three values the first and the last element are never probed: they report -1.
QOR_API int halfSearch(short* values, int count, short key);
QOR_API int halfSearch(long* values, int count, long key);
