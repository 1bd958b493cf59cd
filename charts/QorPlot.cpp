#include "QorPlot.h"

#include <cstddef>
#include <cstring>
#include <new>

namespace
{
// "標楷體" (the standard regular script font) in Big5, the library's text encoding.
const char kDefaultFontName[] = "\xBC\xD0\xB7\xA2\xC5\xE9";

// Element i of an array of T; copied bytewise so that a source given as void* needs no alignment.
template <typename T>
double ReadAs(const void* base, std::size_t i)
{
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(base) + i * sizeof(T), sizeof(T));
    return static_cast<double>(value);
}
} // namespace

QorPlot::QorPlot()
{
    Initialize();
}

QorPlot::~QorPlot()
{
    delete[] m_lines;
}

void QorPlot::Initialize()
{
    m_defSize = 0;
    m_tagSize = 0;
    m_defData = nullptr;
    m_valueData = nullptr;
    m_defType = kChar;
    m_valueType = kChar;
    m_defStride = 1;
    m_valueStride = 1;
    m_defText = nullptr;
    m_tagText = nullptr;
    m_defTextSwitch = 1;
    m_defAsNumber = 0;
    m_title.Empty();
    m_subTitle.Empty();
    m_xMemo.Empty();
    m_yMemo.Empty();
    m_tagMemo.Empty();
    m_scaleX = 100;
    m_scaleY = 100;
    // Assigned field by field: the chart's top lies above its bottom, which QorRect::SetRect would swap.
    m_rect.left = 0;
    m_rect.top = 300;
    m_rect.right = 400;
    m_rect.bottom = 0;
    m_gridSwitch = 0;
    m_gridNum = 10;
    m_defaultLineType = 0;
    m_defaultLineWidth = 1;
    delete[] m_lines;
    m_lines = nullptr;
    for (int i = 0; i < kFontCount; ++i)
    {
        m_fontName[i] = kDefaultFontName;
        m_fontSize[i] = 8;
    }
    m_fontSize[kTitleFont] = 12;
    m_fontSize[kSubTitleFont] = 10;
}

char QorPlot::IfDefTextSwitch(char on)
{
    m_defTextSwitch = on;
    return 1;
}

char QorPlot::IfDefAsNumber(char on)
{
    m_defAsNumber = on;
    return 1;
}

void QorPlot::SetDefSource(void* data, unsigned stride, VariableType type)
{
    m_defData = data;
    m_defStride = stride;
    m_defType = type;
}

void QorPlot::SetValueSource(void* rows, unsigned stride, VariableType type)
{
    m_valueData = rows;
    m_valueStride = stride;
    m_valueType = type;
}

void QorPlot::SetTagSize(unsigned n)
{
    if (n == m_tagSize)
        return;
    std::int32_t* table = nullptr;
    if (n > 0)
    {
        table = new (std::nothrow) std::int32_t[n];
        if (!table)
        {
            SetException(1);
            return;
        }
        const unsigned kept = n < m_tagSize ? n : m_tagSize;
        for (unsigned i = 0; i < kept; ++i)
            table[i] = m_lines[i];
        // Types and widths are one table: a new entry takes the default type and then the default width,
        // so the width is what remains.
        for (unsigned i = kept; i < n; ++i)
            table[i] = m_defaultLineWidth;
    }
    delete[] m_lines;
    m_lines = table;
    m_tagSize = n;
}

void QorPlot::SetLineType(int* types)
{
    if (!types)
        return;
    for (unsigned i = 0; i < m_tagSize; ++i)
        m_lines[i] = types[i];
}

void QorPlot::SetLineWidth(int* widths)
{
    if (!widths)
        return;
    for (unsigned i = 0; i < m_tagSize; ++i)
        m_lines[i] = widths[i];
}

char QorPlot::SetLineType(unsigned i, int type)
{
    if (i >= m_tagSize)
        return 0;
    m_lines[i] = type;
    return 1;
}

char QorPlot::SetLineWidth(unsigned i, int width)
{
    if (i >= m_tagSize)
        return 0;
    m_lines[i] = width;
    return 1;
}

int QorPlot::GetLineType(unsigned i) const
{
    return i < m_tagSize ? m_lines[i] : m_defaultLineType;
}

int QorPlot::GetLineWidth(unsigned i) const
{
    return i < m_tagSize ? m_lines[i] : m_defaultLineWidth;
}

char QorPlot::SetRect(int left, int top, int right, int bottom)
{
    // In 64 bits: right - left of two ints can overflow an int.
    if (static_cast<long>(right) - left < 1 || top == bottom)
        return 0;
    m_rect.left = left;
    m_rect.top = top;
    m_rect.right = right;
    m_rect.bottom = bottom;
    return 1;
}

void QorPlot::SetScale(long x, long y)
{
    m_scaleX = static_cast<std::int32_t>(x);
    m_scaleY = static_cast<std::int32_t>(y);
}

char QorPlot::SetFontName(unsigned i, const QorString& name)
{
    if (i >= kFontCount)
        return 0;
    m_fontName[i] = name;
    return 1;
}

char QorPlot::SetFontSize(unsigned i, int size)
{
    if (i >= kFontCount)
        return 0;
    m_fontSize[i] = size;
    return 1;
}

const QorString& QorPlot::GetFontName(unsigned i) const
{
    static const QorString empty;
    return i < kFontCount ? m_fontName[i] : empty;
}

int QorPlot::GetFontSize(unsigned i) const
{
    return i < kFontCount ? m_fontSize[i] : 0;
}

double QorPlot::ReadElement(void* base, unsigned i, unsigned stride, VariableType type)
{
    switch (type)
    {
    case kChar:
        // Signed whatever the platform's char: the element type is an 8-bit signed integer.
        return ReadAs<signed char>(base, i);
    case kShort:
        return ReadAs<short>(base, i);
    case kLong:
        return ReadAs<long>(base, i);
    case kInt:
        return ReadAs<int>(base, i);
    case kFloat:
        return ReadAs<float>(base, i);
    case kDouble:
        return ReadAs<double>(base, i);
    case kObject:
    {
        auto* object = reinterpret_cast<QorPlotCompatibleObj*>(static_cast<unsigned char*>(base) +
                                                               static_cast<std::size_t>(i) * stride);
        return object->GetPlotValue();
    }
    }
    return 0.0;
}

double QorPlot::GetDef(unsigned i)
{
    if (i >= m_defSize)
    {
        SetException(2);
        return 0.0;
    }
    if (!m_defData)
        return 0.0;
    return ReadElement(m_defData, i, m_defStride, m_defType);
}

double QorPlot::GetValue(unsigned category, unsigned series)
{
    if (category >= m_defSize)
        return 0.0;
    // With no series count declared the row's length is the caller's to know: nothing bounds s.
    if (m_tagSize != 0 && series >= m_tagSize)
    {
        SetException(2);
        return 0.0;
    }
    if (!m_valueData)
        return 0.0;
    void* row = nullptr;
    std::memcpy(&row, static_cast<const unsigned char*>(m_valueData) + category * sizeof(void*), sizeof(void*));
    if (!row)
        return 0.0;
    return ReadElement(row, series, m_valueStride, m_valueType);
}

PlotVBar::PlotVBar()
{
    Initialize();
}

void PlotVBar::Draw(CDC* dc)
{
    Draw2D(dc);
}

void PlotVBar::Draw2D(CDC*) {}
