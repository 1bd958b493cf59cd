#pragma once

#include "core/QorExport.h"

#include "qor/core.h"

#include <cstdint>

/// The platform's drawing context. Charts only pass it on; it is defined by the platform layer.
class CDC;

/// Base of application objects that can stand in a chart's data array: the chart asks each one for
/// GetPlotValue().
class QOR_API QorPlotCompatibleObj
{
public:
    QorPlotCompatibleObj() = default;
    explicit QorPlotCompatibleObj(long data) : m_plotData(static_cast<std::int32_t>(data)) {}
    /// Copies the 32-bit data field.
    QorPlotCompatibleObj(const QorPlotCompatibleObj&) = default;
    QorPlotCompatibleObj& operator=(const QorPlotCompatibleObj&) = default;
    virtual ~QorPlotCompatibleObj() = default;

    /// The value the chart plots for this object; 0.0 unless overridden.
    virtual double GetPlotValue() { return 0.0; }

    /// A 32-bit value for the deriving class's own use; the chart does not read it.
    long GetPlotData() const { return m_plotData; }
    void SetPlotData(long data) { m_plotData = static_cast<std::int32_t>(data); }

protected:
    std::int32_t m_plotData = 0;
};

/// Base of the charts: borrowed category and value arrays in one of seven element types, titles and memo
/// texts with their fonts, the chart rectangle, grid settings and per-series line types and widths.
/// Error code 2 records a data index out of range (GetDef, GetValue).
/// \note The data arrays and label texts are borrowed: they must outlive the chart, and they must hold at
///       least def size categories (and tag size series per value row). Charts are not copyable.
class QOR_API QorPlot : public QorObj
{
public:
    /// Element type of a data source.
    enum VariableType : std::int32_t
    {
        kChar = 0,   ///< 8-bit signed integer (read as signed whatever the platform's char)
        kShort = 1,  ///< 16-bit signed integer
        kLong = 2,   ///< the platform's long (64 bits on LP64)
        kInt = 3,    ///< 32-bit signed integer
        kFloat = 4,  ///< 32-bit float
        kDouble = 5, ///< 64-bit double
        kObject = 6, ///< object derived from QorPlotCompatibleObj, laid out with a given stride in bytes
    };

    /// Indices of the seven font slots.
    enum FontSlot : std::int32_t
    {
        kTitleFont = 0,
        kSubTitleFont = 1,
        kXMemoFont = 2,
        kYMemoFont = 3,
        kTagMemoFont = 4,
        kDefTextFont = 5,
        kTagTextFont = 6,
        kFontCount = 7,
    };

    /// A chart with every setting at its default (see Initialize).
    QorPlot();
    QorPlot(const QorPlot&) = delete;
    QorPlot& operator=(const QorPlot&) = delete;
    virtual ~QorPlot();

    /// Resets every setting to its default: no data, no texts, sizes 0, rectangle (0, 300, 400, 0), grid off
    /// with 10 lines, default line type 0 and width 1, scales 100, fonts "標楷體" (Big5) of sizes 12, 10
    /// and 8 for the other five. The line table is freed; the error code is left as it is.
    void Initialize();

    /// Draws the chart on dc.
    virtual void Draw(CDC* dc) = 0;

    /// Number of categories: the length of the def data, the def texts and the value rows.
    void SetDefSize(unsigned size) { m_defSize = size; }
    unsigned GetDefSize() const { return m_defSize; }

    /// Series label texts (tag size of them, borrowed).
    void SetTagText(QorString* texts) { m_tagText = texts; }
    QorString* GetTagText() const { return m_tagText; }
    /// Category label texts (def size of them, borrowed).
    void SetDefTextPtr(QorString* texts) { m_defText = texts; }
    QorString* GetDefTextPtr() const { return m_defText; }

    /// The texts are copied.
    void SetTitle(QorString& text) { m_title = text; }
    void SetSubTitle(QorString& text) { m_subTitle = text; }
    void SetX_Memo(QorString& text) { m_xMemo = text; }
    void SetY_Memo(QorString& text) { m_yMemo = text; }
    void SetTag_Memo(QorString& text) { m_tagMemo = text; }
    const QorString& GetTitle() const { return m_title; }
    const QorString& GetSubTitle() const { return m_subTitle; }
    const QorString& GetX_Memo() const { return m_xMemo; }
    const QorString& GetY_Memo() const { return m_yMemo; }
    const QorString& GetTag_Memo() const { return m_tagMemo; }

    /// Show the category texts; returns true.
    virtual char IfDefTextSwitch(char on);
    /// Show the categories as numbers; returns true.
    virtual char IfDefAsNumber(char on);
    char GetDefTextSwitch() const { return m_defTextSwitch; }
    char GetDefAsNumber() const { return m_defAsNumber; }

    void IfGridSwitch(char on) { m_gridSwitch = on; }
    char GetGridSwitch() const { return m_gridSwitch; }
    void SetGridNum(short n) { m_gridNum = n; }
    short GetGridNum() const { return m_gridNum; }

    /// Category data, one element per category; the type and stride follow from the pointer type.
    void SetDef(char* data) { SetDefSource(data, sizeof(char), kChar); }
    void SetDef(short* data) { SetDefSource(data, sizeof(short), kShort); }
    void SetDef(long* data) { SetDefSource(data, sizeof(long), kLong); }
    void SetDef(int* data) { SetDefSource(data, sizeof(int), kInt); }
    void SetDef(float* data) { SetDefSource(data, sizeof(float), kFloat); }
    void SetDef(double* data) { SetDefSource(data, sizeof(double), kDouble); }
    /// Objects stride bytes apart, starting at data (stride is sizeof the derived class for an array).
    void SetDef(QorPlotCompatibleObj* data, unsigned stride) { SetDefSource(data, stride, kObject); }
    /// Any source; the stride is only used to step between objects of type kObject, the other types are read
    /// as arrays of their element. A type outside 0 to 6 reads as 0.0.
    void SetDef(void* data, unsigned stride, VariableType type) { SetDefSource(data, stride, type); }

    /// Value data: one row pointer per category, each row one element per series.
    void SetValue(char** rows) { SetValueSource(rows, sizeof(char), kChar); }
    void SetValue(short** rows) { SetValueSource(rows, sizeof(short), kShort); }
    void SetValue(long** rows) { SetValueSource(rows, sizeof(long), kLong); }
    void SetValue(int** rows) { SetValueSource(rows, sizeof(int), kInt); }
    void SetValue(float** rows) { SetValueSource(rows, sizeof(float), kFloat); }
    void SetValue(double** rows) { SetValueSource(rows, sizeof(double), kDouble); }
    /// Each row holds objects stride bytes apart.
    void SetValue(QorPlotCompatibleObj** rows, unsigned stride) { SetValueSource(rows, stride, kObject); }
    /// Any rows; the stride is used as for SetDef(void*, unsigned, VariableType).
    void SetValue(void** rows, unsigned stride, VariableType type) { SetValueSource(rows, stride, type); }

    const void* GetDefData() const { return m_defData; }
    VariableType GetDefType() const { return m_defType; }
    unsigned GetDefStride() const { return m_defStride; }
    const void* GetValueData() const { return m_valueData; }
    VariableType GetValueType() const { return m_valueType; }
    unsigned GetValueStride() const { return m_valueStride; }

    /// Number of series. Resizes the line table, keeping the first min(old, n) entries; new entries take the
    /// default line type and then the default line width, so they end up holding the width.
    /// \note Line types and line widths are one shared table: setting either sets both. Allocation failure
    ///       sets error code 1 and keeps the old size and table.
    void SetTagSize(unsigned n);
    unsigned GetTagSize() const { return m_tagSize; }
    /// Copies tag size entries from types (nothing while the tag size is 0).
    void SetLineType(int* types);
    /// Copies tag size entries from widths into the same shared table.
    void SetLineWidth(int* widths);
    /// False when i >= tag size.
    char SetLineType(unsigned i, int type);
    /// False when i >= tag size.
    char SetLineWidth(unsigned i, int width);
    /// Entry i of the shared table; the default line type when i >= tag size.
    int GetLineType(unsigned i) const;
    /// Entry i of the shared table; the default line width when i >= tag size.
    int GetLineWidth(unsigned i) const;
    /// Used by SetTagSize for new entries.
    void SetDefaultLineType(int type) { m_defaultLineType = type; }
    void SetDefaultLineWidth(int width) { m_defaultLineWidth = width; }
    int GetDefaultLineType() const { return m_defaultLineType; }
    int GetDefaultLineWidth() const { return m_defaultLineWidth; }

    /// The chart's rectangle in its own coordinates, top above bottom. False (nothing stored) when
    /// right - left < 1 or top == bottom.
    char SetRect(int left, int top, int right, int bottom);
    /// As stored, not normalised: the default is (0, 300, 400, 0).
    const QorRect& GetRect() const { return m_rect; }

    /// Horizontal and vertical drawing scale in percent of the chart rectangle; both 100 by default.
    void SetScale(long x, long y);
    long GetScaleX() const { return m_scaleX; }
    long GetScaleY() const { return m_scaleY; }

    /// Font of slot i (a FontSlot). False when i >= kFontCount.
    char SetFontName(unsigned i, const QorString& name);
    char SetFontSize(unsigned i, int size);
    /// The font name of slot i; an empty string for i >= kFontCount.
    const QorString& GetFontName(unsigned i) const;
    /// The font size of slot i; 0 for i >= kFontCount.
    int GetFontSize(unsigned i) const;

protected:
    /// Category i as a double (type kObject: GetPlotValue() of the object at data + i · stride).
    /// \note i >= def size sets error code 2 and gives 0.0; no def data gives 0.0.
    double GetDef(unsigned i);
    /// Series s of category c as a double (type kObject: the object at row + s · stride).
    /// \note c >= def size gives 0.0; s >= a non-zero tag size sets error code 2 and gives 0.0. With tag
    ///       size 0 no series exist and every s gives 0.0 without an error code; so do missing rows.
    double GetValue(unsigned category, unsigned series);

private:
    void SetDefSource(void* data, unsigned stride, VariableType type);
    void SetValueSource(void* rows, unsigned stride, VariableType type);
    static double ReadElement(void* base, unsigned i, unsigned stride, VariableType type);

    std::uint32_t m_defSize = 0;
    std::uint32_t m_tagSize = 0;
    void* m_defData = nullptr;
    // An array of def size row pointers, whatever their element type.
    void* m_valueData = nullptr;
    VariableType m_defType = kChar;
    VariableType m_valueType = kChar;
    std::uint32_t m_defStride = 1;
    std::uint32_t m_valueStride = 1;
    QorString* m_defText = nullptr;
    QorString* m_tagText = nullptr;
    char m_defTextSwitch = 1;
    char m_defAsNumber = 0;
    QorString m_title;
    QorString m_subTitle;
    QorString m_xMemo;
    QorString m_yMemo;
    QorString m_tagMemo;
    std::int32_t m_scaleX = 100;
    std::int32_t m_scaleY = 100;
    QorRect m_rect;
    char m_gridSwitch = 0;
    std::int16_t m_gridNum = 10;
    std::int32_t m_defaultLineType = 0;
    std::int32_t m_defaultLineWidth = 1;
    // The line types and the line widths: one owned table of tag size entries, or null.
    std::int32_t* m_lines = nullptr;
    QorString m_fontName[kFontCount];
    std::int32_t m_fontSize[kFontCount] = {};
};

/// Vertical bar chart.
/// \note Drawing is not implemented: Draw paints nothing on the device, whatever the data.
class QOR_API PlotVBar : public QorPlot
{
public:
    PlotVBar();

    /// Calls Draw2D(dc).
    void Draw(CDC* dc) override;

protected:
    /// The bar chart's drawing; paints nothing.
    virtual void Draw2D(CDC* dc);
};
