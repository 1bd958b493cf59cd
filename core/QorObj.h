#pragma once

#include "core/QorExport.h"

#include <cstdint>

/// Base of the objects that keep a sticky error code (0 none, 1 allocation failed, 4 range clamped).
/// \note Codes are never cleared by the library; call SetException(0) before testing a later operation.
class QOR_API QorObj
{
public:
    QorObj() = default;
    QorObj(const QorObj&) = default;
    QorObj& operator=(const QorObj& other)
    {
        m_exception = other.m_exception;
        return *this;
    }

    /// Store an error code.
    void SetException(long code) { m_exception = static_cast<std::int32_t>(code); }
    /// The stored error code, 0 when nothing went wrong.
    long GetException() const { return m_exception; }

protected:
    std::int32_t m_exception = 0;
};

/// A fuller error record: code, a 200-byte message area and a further value.
class QOR_API QorException
{
public:
    enum { kTextSize = 200 };

    /// Code and detail 0; the text area starts zeroed (an empty terminated text).
    QorException() = default;
    QorException(const QorException&) = default;
    /// Copies the whole record: code, all 200 text bytes, detail.
    QorException& operator=(const QorException&) = default;

    void SetException(long value) { code = static_cast<std::int32_t>(value); }

    std::int32_t code = 0;
    char text[kTextSize] = {};
    std::int32_t detail = 0;
};

/// Message texts of the tree containers' error codes 0 to 10; other codes have no entry.
extern QOR_API const char* const TREE_ERR[11];
