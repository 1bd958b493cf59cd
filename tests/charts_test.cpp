// Charts: QorPlot's settings, typed data sources and their conversion, the shared line table, PlotVBar.
#include "qor/charts.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace
{
// "標楷體" in Big5.
const char kKaiFont[] = "\xBC\xD0\xB7\xA2\xC5\xE9";

// A bar chart that exposes the protected readers and counts its drawing calls.
class TestChart : public PlotVBar
{
public:
    using QorPlot::GetDef;
    using QorPlot::GetValue;

    int draw2DCalls = 0;
    CDC* lastDc = reinterpret_cast<CDC*>(1);

protected:
    void Draw2D(CDC* dc) override
    {
        ++draw2DCalls;
        lastDc = dc;
        PlotVBar::Draw2D(dc);
    }
};

// An application object with its own plotted value and extra data after the base.
class Score : public QorPlotCompatibleObj
{
public:
    Score() = default;
    Score(double value, long id) : QorPlotCompatibleObj(id), m_score(value) {}
    double GetPlotValue() override { return m_score; }

private:
    double m_score = 0.0;
    char m_padding[20] = {};
};

void ExpectRect(const QorRect& r, long left, long top, long right, long bottom)
{
    EXPECT_EQ(r.left, left);
    EXPECT_EQ(r.top, top);
    EXPECT_EQ(r.right, right);
    EXPECT_EQ(r.bottom, bottom);
}
} // namespace

// Defaults

TEST(QorPlotDefaults, NewBarChartHasRectangleGridNumberAndLineWidth)
{
    PlotVBar chart;
    ExpectRect(chart.GetRect(), 0, 300, 400, 0);
    EXPECT_EQ(chart.GetGridNum(), 10);
    EXPECT_EQ(chart.GetDefaultLineWidth(), 1);
    EXPECT_EQ(chart.GetDefaultLineType(), 0);
    EXPECT_EQ(chart.GetGridSwitch(), 0);
}

TEST(QorPlotDefaults, NewBarChartHasSevenKaiFontsSizedTwelveTenAndEight)
{
    PlotVBar chart;
    const int sizes[] = {12, 10, 8, 8, 8, 8, 8};
    for (unsigned i = 0; i < 7; ++i)
    {
        EXPECT_EQ(chart.GetFontName(i) == kKaiFont, 1) << i;
        EXPECT_EQ(chart.GetFontName(i).GetLength(), 6u) << i;
        EXPECT_EQ(chart.GetFontSize(i), sizes[i]) << i;
    }
    EXPECT_EQ(chart.GetFontSize(QorPlot::kTitleFont), 12);
    EXPECT_EQ(chart.GetFontSize(QorPlot::kSubTitleFont), 10);
}

TEST(QorPlotDefaults, NewChartHasNoDataNoTextsAndNoError)
{
    PlotVBar chart;
    EXPECT_EQ(chart.GetException(), 0);
    EXPECT_EQ(chart.GetDefSize(), 0u);
    EXPECT_EQ(chart.GetTagSize(), 0u);
    EXPECT_EQ(chart.GetDefData(), nullptr);
    EXPECT_EQ(chart.GetValueData(), nullptr);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kChar);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kChar);
    EXPECT_EQ(chart.GetDefTextPtr(), nullptr);
    EXPECT_EQ(chart.GetTagText(), nullptr);
    EXPECT_EQ(chart.GetDefTextSwitch(), 1);
    EXPECT_EQ(chart.GetDefAsNumber(), 0);
    EXPECT_EQ(chart.GetTitle().IsEmpty(), 1);
    EXPECT_EQ(chart.GetSubTitle().IsEmpty(), 1);
    EXPECT_EQ(chart.GetX_Memo().IsEmpty(), 1);
    EXPECT_EQ(chart.GetY_Memo().IsEmpty(), 1);
    EXPECT_EQ(chart.GetTag_Memo().IsEmpty(), 1);
    EXPECT_EQ(chart.GetScaleX(), 100);
    EXPECT_EQ(chart.GetScaleY(), 100);
}

TEST(QorPlotDefaults, InitializeRestoresDefaultsAndKeepsTheErrorCode)
{
    TestChart chart;
    short data[2] = {1, 2};
    QorString title("Sales");
    chart.SetDef(data);
    chart.SetDefSize(2);
    chart.SetTitle(title);
    chart.SetTagSize(3);
    chart.SetGridNum(4);
    chart.IfGridSwitch(1);
    chart.SetRect(1, 2, 30, 40);
    chart.SetFontSize(QorPlot::kTitleFont, 20);
    chart.GetDef(5);
    ASSERT_EQ(chart.GetException(), 2);

    chart.Initialize();
    EXPECT_EQ(chart.GetException(), 2);
    EXPECT_EQ(chart.GetDefSize(), 0u);
    EXPECT_EQ(chart.GetTagSize(), 0u);
    EXPECT_EQ(chart.GetDefData(), nullptr);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kChar);
    EXPECT_EQ(chart.GetTitle().IsEmpty(), 1);
    EXPECT_EQ(chart.GetGridNum(), 10);
    EXPECT_EQ(chart.GetGridSwitch(), 0);
    ExpectRect(chart.GetRect(), 0, 300, 400, 0);
    EXPECT_EQ(chart.GetFontSize(QorPlot::kTitleFont), 12);
    EXPECT_EQ(chart.GetLineWidth(0), 1);
}

// Setters

TEST(QorPlotSetters, SetRectRejectsZeroWidth)
{
    PlotVBar chart;
    EXPECT_EQ(chart.SetRect(10, 5, 10, 50), 0);
    ExpectRect(chart.GetRect(), 0, 300, 400, 0);
    EXPECT_EQ(chart.SetRect(0, 5, 1, 50), 1);
    ExpectRect(chart.GetRect(), 0, 5, 1, 50);
}

TEST(QorPlotSetters, SetRectRejectsEqualTopAndBottomOrReversedSides)
{
    PlotVBar chart;
    EXPECT_EQ(chart.SetRect(0, 20, 100, 20), 0);
    EXPECT_EQ(chart.SetRect(100, 0, 0, 50), 0);
    ExpectRect(chart.GetRect(), 0, 300, 400, 0);
    // Top above or below bottom is stored as given, not normalised.
    EXPECT_EQ(chart.SetRect(-10, 200, 90, -20), 1);
    ExpectRect(chart.GetRect(), -10, 200, 90, -20);
}

TEST(QorPlotSetters, SetRectAtIntLimitsDoesNotOverflow)
{
    PlotVBar chart;
    EXPECT_EQ(chart.SetRect(INT_MIN, 0, INT_MAX, 1), 1);
    ExpectRect(chart.GetRect(), INT_MIN, 0, INT_MAX, 1);
    EXPECT_EQ(chart.SetRect(INT_MAX, 0, INT_MIN, 1), 0);
}

TEST(QorPlotSetters, TitleAndMemoTextsAreCopied)
{
    PlotVBar chart;
    QorString title("Title"), sub("Sub"), x("X axis"), y("Y axis"), tag("Series");
    chart.SetTitle(title);
    chart.SetSubTitle(sub);
    chart.SetX_Memo(x);
    chart.SetY_Memo(y);
    chart.SetTag_Memo(tag);
    title = "changed";
    x = "changed";
    EXPECT_EQ(chart.GetTitle() == "Title", 1);
    EXPECT_EQ(chart.GetSubTitle() == "Sub", 1);
    EXPECT_EQ(chart.GetX_Memo() == "X axis", 1);
    EXPECT_EQ(chart.GetY_Memo() == "Y axis", 1);
    EXPECT_EQ(chart.GetTag_Memo() == "Series", 1);
}

TEST(QorPlotSetters, LabelTextPointersAreBorrowed)
{
    PlotVBar chart;
    QorString defTexts[2] = {QorString("Jan"), QorString("Feb")};
    QorString tagTexts[1] = {QorString("North")};
    chart.SetDefTextPtr(defTexts);
    chart.SetTagText(tagTexts);
    EXPECT_EQ(chart.GetDefTextPtr(), defTexts);
    EXPECT_EQ(chart.GetTagText(), tagTexts);
}

TEST(QorPlotSetters, TextSwitchesStoreTheirFlagAndReturnTrue)
{
    PlotVBar chart;
    EXPECT_EQ(chart.IfDefTextSwitch(0), 1);
    EXPECT_EQ(chart.GetDefTextSwitch(), 0);
    EXPECT_EQ(chart.IfDefAsNumber(1), 1);
    EXPECT_EQ(chart.GetDefAsNumber(), 1);
    EXPECT_EQ(chart.IfDefTextSwitch(1), 1);
    EXPECT_EQ(chart.GetDefTextSwitch(), 1);
}

TEST(QorPlotSetters, GridAndDefaultLineSettersStoreTheValue)
{
    PlotVBar chart;
    chart.IfGridSwitch(1);
    chart.SetGridNum(-3);
    chart.SetDefaultLineType(4);
    chart.SetDefaultLineWidth(6);
    chart.SetDefSize(12);
    EXPECT_EQ(chart.GetGridSwitch(), 1);
    EXPECT_EQ(chart.GetGridNum(), -3);
    EXPECT_EQ(chart.GetDefaultLineType(), 4);
    EXPECT_EQ(chart.GetDefaultLineWidth(), 6);
    EXPECT_EQ(chart.GetDefSize(), 12u);
}

TEST(QorPlotSetters, FontsAndScaleAreSetPerSlot)
{
    PlotVBar chart;
    EXPECT_EQ(chart.SetFontName(QorPlot::kYMemoFont, QorString("Arial")), 1);
    EXPECT_EQ(chart.SetFontSize(QorPlot::kYMemoFont, 14), 1);
    EXPECT_EQ(chart.GetFontName(QorPlot::kYMemoFont) == "Arial", 1);
    EXPECT_EQ(chart.GetFontSize(QorPlot::kYMemoFont), 14);
    EXPECT_EQ(chart.GetFontName(QorPlot::kXMemoFont) == kKaiFont, 1);
    EXPECT_EQ(chart.SetFontName(7, QorString("Arial")), 0);
    EXPECT_EQ(chart.SetFontSize(7, 9), 0);
    EXPECT_EQ(chart.GetFontName(7).IsEmpty(), 1);
    EXPECT_EQ(chart.GetFontSize(7), 0);
    chart.SetScale(50, 200);
    EXPECT_EQ(chart.GetScaleX(), 50);
    EXPECT_EQ(chart.GetScaleY(), 200);
}

// Category data and GetDef

TEST(QorPlotDef, TypedSettersSetTypeAndStride)
{
    PlotVBar chart;
    char c[1] = {};
    short s[1] = {};
    long l[1] = {};
    int i[1] = {};
    float f[1] = {};
    double d[1] = {};
    Score o[1];
    chart.SetDef(c);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kChar);
    EXPECT_EQ(chart.GetDefStride(), 1u);
    chart.SetDef(s);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kShort);
    EXPECT_EQ(chart.GetDefStride(), 2u);
    chart.SetDef(l);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kLong);
    EXPECT_EQ(chart.GetDefStride(), sizeof(long));
    chart.SetDef(i);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kInt);
    EXPECT_EQ(chart.GetDefStride(), 4u);
    chart.SetDef(f);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kFloat);
    EXPECT_EQ(chart.GetDefStride(), 4u);
    chart.SetDef(d);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kDouble);
    EXPECT_EQ(chart.GetDefStride(), 8u);
    EXPECT_EQ(chart.GetDefData(), d);
    chart.SetDef(o, sizeof(Score));
    EXPECT_EQ(chart.GetDefType(), QorPlot::kObject);
    EXPECT_EQ(chart.GetDefStride(), sizeof(Score));
    chart.SetDef(static_cast<void*>(s), 6, QorPlot::kFloat);
    EXPECT_EQ(chart.GetDefType(), QorPlot::kFloat);
    EXPECT_EQ(chart.GetDefStride(), 6u);
    EXPECT_EQ(chart.GetDefData(), s);
}

TEST(QorPlotDef, CharDataReadsAsSignedEightBit)
{
    TestChart chart;
    char data[3] = {static_cast<char>(0xFB), 127, static_cast<char>(0x80)};
    chart.SetDef(data);
    chart.SetDefSize(3);
    EXPECT_EQ(chart.GetDef(0), -5.0);
    EXPECT_EQ(chart.GetDef(1), 127.0);
    EXPECT_EQ(chart.GetDef(2), -128.0);
}

TEST(QorPlotDef, ShortDataConvertsExactly)
{
    TestChart chart;
    short data[3] = {-32768, 12345, 32767};
    chart.SetDef(data);
    chart.SetDefSize(3);
    EXPECT_EQ(chart.GetDef(0), -32768.0);
    EXPECT_EQ(chart.GetDef(1), 12345.0);
    EXPECT_EQ(chart.GetDef(2), 32767.0);
    EXPECT_EQ(chart.GetException(), 0);
}

TEST(QorPlotDef, LongDataReadsWholeLongs)
{
    TestChart chart;
    long data[2] = {-2147483648L, 4294967296L};
    chart.SetDef(data);
    chart.SetDefSize(2);
    EXPECT_EQ(chart.GetDef(0), -2147483648.0);
    EXPECT_EQ(chart.GetDef(1), 4294967296.0);
}

TEST(QorPlotDef, IntFloatAndDoubleDataConvert)
{
    TestChart chart;
    int ints[2] = {INT_MIN, 77};
    chart.SetDef(ints);
    chart.SetDefSize(2);
    EXPECT_EQ(chart.GetDef(0), -2147483648.0);
    EXPECT_EQ(chart.GetDef(1), 77.0);
    float floats[2] = {0.1f, -2.5f};
    chart.SetDef(floats);
    EXPECT_EQ(chart.GetDef(0), static_cast<double>(0.1f));
    EXPECT_EQ(chart.GetDef(1), -2.5);
    double doubles[2] = {0.1, 1e300};
    chart.SetDef(doubles);
    EXPECT_EQ(chart.GetDef(0), 0.1);
    EXPECT_EQ(chart.GetDef(1), 1e300);
}

TEST(QorPlotDef, ObjectsAreAskedForTheirValueAtTheStride)
{
    TestChart chart;
    Score scores[3] = {Score(1.5, 10), Score(-2.0, 11), Score(40.25, 12)};
    chart.SetDef(scores, sizeof(Score));
    chart.SetDefSize(3);
    EXPECT_EQ(chart.GetDef(0), 1.5);
    EXPECT_EQ(chart.GetDef(1), -2.0);
    EXPECT_EQ(chart.GetDef(2), 40.25);
}

TEST(QorPlotDef, BaseObjectsPlotZero)
{
    TestChart chart;
    QorPlotCompatibleObj objects[2] = {QorPlotCompatibleObj(5), QorPlotCompatibleObj(6)};
    chart.SetDef(objects, sizeof(QorPlotCompatibleObj));
    chart.SetDefSize(2);
    EXPECT_EQ(chart.GetDef(0), 0.0);
    EXPECT_EQ(chart.GetDef(1), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
}

TEST(QorPlotDef, VoidSourceReadsTypedElementsAndUsesStrideOnlyForObjects)
{
    TestChart chart;
    short data[3] = {4, 5, 6};
    chart.SetDef(static_cast<void*>(data), 99, QorPlot::kShort);
    chart.SetDefSize(3);
    EXPECT_EQ(chart.GetDef(2), 6.0);
    Score scores[2] = {Score(3.0, 0), Score(9.0, 1)};
    chart.SetDef(static_cast<void*>(static_cast<QorPlotCompatibleObj*>(scores)), sizeof(Score), QorPlot::kObject);
    chart.SetDefSize(2);
    EXPECT_EQ(chart.GetDef(1), 9.0);
}

TEST(QorPlotDef, IndexEqualToDefSizeGivesZeroAndErrorTwo)
{
    TestChart chart;
    short data[4] = {1, 2, 3, 99};
    chart.SetDef(data);
    chart.SetDefSize(3);
    EXPECT_EQ(chart.GetDef(3), 0.0);
    EXPECT_EQ(chart.GetException(), 2);
    // The code is sticky: a later good read leaves it.
    EXPECT_EQ(chart.GetDef(2), 3.0);
    EXPECT_EQ(chart.GetException(), 2);
}

TEST(QorPlotDef, MissingDataOrUnknownTypeReadsZero)
{
    TestChart chart;
    chart.SetDefSize(2);
    EXPECT_EQ(chart.GetDef(1), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
    int data[2] = {7, 8};
    chart.SetDef(static_cast<void*>(data), 4, static_cast<QorPlot::VariableType>(9));
    EXPECT_EQ(chart.GetDef(1), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
}

// Value data and GetValue

TEST(QorPlotValue, TypedSettersSetTypeAndStride)
{
    PlotVBar chart;
    char* c[1] = {};
    short* s[1] = {};
    long* l[1] = {};
    int* i[1] = {};
    float* f[1] = {};
    double* d[1] = {};
    QorPlotCompatibleObj* o[1] = {};
    chart.SetValue(c);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kChar);
    EXPECT_EQ(chart.GetValueStride(), 1u);
    chart.SetValue(s);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kShort);
    EXPECT_EQ(chart.GetValueStride(), 2u);
    chart.SetValue(l);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kLong);
    EXPECT_EQ(chart.GetValueStride(), sizeof(long));
    chart.SetValue(i);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kInt);
    EXPECT_EQ(chart.GetValueStride(), 4u);
    chart.SetValue(f);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kFloat);
    EXPECT_EQ(chart.GetValueStride(), 4u);
    chart.SetValue(d);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kDouble);
    EXPECT_EQ(chart.GetValueStride(), 8u);
    EXPECT_EQ(chart.GetValueData(), d);
    chart.SetValue(o, 48);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kObject);
    EXPECT_EQ(chart.GetValueStride(), 48u);
    void* v[1] = {};
    chart.SetValue(v, 3, QorPlot::kInt);
    EXPECT_EQ(chart.GetValueType(), QorPlot::kInt);
    EXPECT_EQ(chart.GetValueStride(), 3u);
    EXPECT_EQ(chart.GetValueData(), v);
}

TEST(QorPlotValue, ShortRowsConvertExactly)
{
    TestChart chart;
    short row0[2] = {-32768, 10};
    short row1[2] = {32767, -1};
    short* rows[2] = {row0, row1};
    chart.SetValue(rows);
    chart.SetDefSize(2);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.GetValue(0, 0), -32768.0);
    EXPECT_EQ(chart.GetValue(0, 1), 10.0);
    EXPECT_EQ(chart.GetValue(1, 0), 32767.0);
    EXPECT_EQ(chart.GetValue(1, 1), -1.0);
    EXPECT_EQ(chart.GetException(), 0);
}

TEST(QorPlotValue, CharLongIntFloatAndDoubleRowsConvert)
{
    TestChart chart;
    chart.SetDefSize(1);
    chart.SetTagSize(2);
    char c[2] = {static_cast<char>(-100), 100};
    char* cRows[1] = {c};
    chart.SetValue(cRows);
    EXPECT_EQ(chart.GetValue(0, 0), -100.0);
    long l[2] = {-5000000000L, 3};
    long* lRows[1] = {l};
    chart.SetValue(lRows);
    EXPECT_EQ(chart.GetValue(0, 0), -5000000000.0);
    int i[2] = {-7, INT_MAX};
    int* iRows[1] = {i};
    chart.SetValue(iRows);
    EXPECT_EQ(chart.GetValue(0, 1), 2147483647.0);
    float f[2] = {0.75f, 0.3f};
    float* fRows[1] = {f};
    chart.SetValue(fRows);
    EXPECT_EQ(chart.GetValue(0, 1), static_cast<double>(0.3f));
    double d[2] = {-0.125, 6.5};
    double* dRows[1] = {d};
    chart.SetValue(dRows);
    EXPECT_EQ(chart.GetValue(0, 0), -0.125);
    EXPECT_EQ(chart.GetValue(0, 1), 6.5);
}

TEST(QorPlotValue, ObjectRowsAreAskedAtTheStride)
{
    TestChart chart;
    Score row0[2] = {Score(1.0, 0), Score(2.0, 1)};
    Score row1[2] = {Score(3.0, 2), Score(4.5, 3)};
    QorPlotCompatibleObj* rows[2] = {row0, row1};
    chart.SetValue(rows, sizeof(Score));
    chart.SetDefSize(2);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.GetValue(0, 1), 2.0);
    EXPECT_EQ(chart.GetValue(1, 0), 3.0);
    EXPECT_EQ(chart.GetValue(1, 1), 4.5);
}

TEST(QorPlotValue, CategoryBeyondDefSizeGivesZeroWithoutError)
{
    TestChart chart;
    int row0[1] = {5};
    int* rows[1] = {row0};
    chart.SetValue(rows);
    chart.SetDefSize(1);
    chart.SetTagSize(1);
    EXPECT_EQ(chart.GetValue(1, 0), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
    EXPECT_EQ(chart.GetValue(0, 0), 5.0);
}

TEST(QorPlotValue, SeriesBeyondTagSizeGivesZeroAndErrorTwo)
{
    TestChart chart;
    int row0[3] = {5, 6, 7};
    int* rows[1] = {row0};
    chart.SetValue(rows);
    chart.SetDefSize(1);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.GetValue(0, 2), 0.0);
    EXPECT_EQ(chart.GetException(), 2);
}

TEST(QorPlotValue, NoSeriesDeclaredReadsTheRowUnchecked)
{
    TestChart chart;
    int row0[3] = {5, 6, 7};
    int row1[3] = {-8, 9, 10};
    int* rows[2] = {row0, row1};
    chart.SetValue(rows);
    chart.SetDefSize(2);
    ASSERT_EQ(chart.GetTagSize(), 0u);
    EXPECT_EQ(chart.GetValue(0, 0), 5.0);
    EXPECT_EQ(chart.GetValue(0, 2), 7.0);
    EXPECT_EQ(chart.GetValue(1, 0), -8.0);
    EXPECT_EQ(chart.GetValue(1, 1), 9.0);
    EXPECT_EQ(chart.GetValue(2, 0), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
}

TEST(QorPlotValue, MissingRowsReadZero)
{
    TestChart chart;
    chart.SetDefSize(2);
    chart.SetTagSize(1);
    EXPECT_EQ(chart.GetValue(1, 0), 0.0);
    int row0[1] = {9};
    int* rows[2] = {row0, nullptr};
    chart.SetValue(rows);
    EXPECT_EQ(chart.GetValue(0, 0), 9.0);
    EXPECT_EQ(chart.GetValue(1, 0), 0.0);
    EXPECT_EQ(chart.GetException(), 0);
}

// Line types and widths

TEST(QorPlotLines, TagSizeFillsNewEntriesWithTheDefaultWidth)
{
    PlotVBar chart;
    chart.SetDefaultLineType(7);
    chart.SetDefaultLineWidth(3);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.GetTagSize(), 2u);
    for (unsigned i = 0; i < 2; ++i)
    {
        EXPECT_EQ(chart.GetLineType(i), 3) << i;
        EXPECT_EQ(chart.GetLineWidth(i), 3) << i;
    }
}

TEST(QorPlotLines, SettingALineTypeAlsoSetsItsWidth)
{
    PlotVBar chart;
    chart.SetTagSize(2);
    EXPECT_EQ(chart.SetLineType(0, 5), 1);
    EXPECT_EQ(chart.GetLineType(0), 5);
    EXPECT_EQ(chart.GetLineWidth(0), 5);
    EXPECT_EQ(chart.SetLineWidth(1, 9), 1);
    EXPECT_EQ(chart.GetLineType(1), 9);
    EXPECT_EQ(chart.GetLineWidth(1), 9);
}

TEST(QorPlotLines, IndexAtTagSizeIsRefused)
{
    PlotVBar chart;
    EXPECT_EQ(chart.SetLineType(0, 5), 0);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.SetLineType(2, 5), 0);
    EXPECT_EQ(chart.SetLineWidth(2, 5), 0);
    EXPECT_EQ(chart.GetLineWidth(0), 1);
    EXPECT_EQ(chart.GetLineWidth(1), 1);
}

TEST(QorPlotLines, QueriesBeyondTagSizeGiveTheDefaults)
{
    PlotVBar chart;
    chart.SetDefaultLineType(2);
    chart.SetDefaultLineWidth(4);
    EXPECT_EQ(chart.GetLineType(0), 2);
    EXPECT_EQ(chart.GetLineWidth(0), 4);
    chart.SetTagSize(1);
    EXPECT_EQ(chart.GetLineType(1), 2);
    EXPECT_EQ(chart.GetLineWidth(5), 4);
}

TEST(QorPlotLines, ResizingKeepsTheFirstEntries)
{
    PlotVBar chart;
    chart.SetTagSize(2);
    chart.SetLineType(0, 4);
    chart.SetLineType(1, 6);
    chart.SetDefaultLineWidth(2);
    chart.SetTagSize(4);
    const int grown[] = {4, 6, 2, 2};
    for (unsigned i = 0; i < 4; ++i)
        EXPECT_EQ(chart.GetLineType(i), grown[i]) << i;
    chart.SetTagSize(1);
    EXPECT_EQ(chart.GetTagSize(), 1u);
    EXPECT_EQ(chart.GetLineWidth(0), 4);
    EXPECT_EQ(chart.SetLineWidth(1, 3), 0);
    chart.SetTagSize(3);
    EXPECT_EQ(chart.GetLineType(0), 4);
    EXPECT_EQ(chart.GetLineType(1), 2);
    EXPECT_EQ(chart.GetLineType(2), 2);
}

TEST(QorPlotLines, SameTagSizeChangesNothing)
{
    PlotVBar chart;
    chart.SetTagSize(2);
    chart.SetLineWidth(0, 8);
    chart.SetDefaultLineWidth(5);
    chart.SetTagSize(2);
    EXPECT_EQ(chart.GetLineWidth(0), 8);
    EXPECT_EQ(chart.GetLineWidth(1), 1);
}

TEST(QorPlotLines, TagSizeZeroDropsTheTable)
{
    PlotVBar chart;
    chart.SetTagSize(3);
    chart.SetLineType(0, 9);
    chart.SetTagSize(0);
    EXPECT_EQ(chart.GetTagSize(), 0u);
    EXPECT_EQ(chart.SetLineType(0, 1), 0);
    EXPECT_EQ(chart.GetLineType(0), 0);
    chart.SetTagSize(1);
    EXPECT_EQ(chart.GetLineType(0), 1);
}

TEST(QorPlotLines, ArraySettersCopyTagSizeEntriesIntoTheSharedTable)
{
    PlotVBar chart;
    chart.SetTagSize(3);
    int types[4] = {1, 2, 3, 99};
    int widths[4] = {7, 8, 9, 99};
    chart.SetLineType(types);
    EXPECT_EQ(chart.GetLineWidth(2), 3);
    chart.SetLineWidth(widths);
    const int expected[] = {7, 8, 9};
    for (unsigned i = 0; i < 3; ++i)
    {
        EXPECT_EQ(chart.GetLineType(i), expected[i]) << i;
        EXPECT_EQ(chart.GetLineWidth(i), expected[i]) << i;
    }
    EXPECT_EQ(chart.GetLineType(3), 0);
    types[0] = 50;
    EXPECT_EQ(chart.GetLineType(0), 7);
}

TEST(QorPlotLines, ArraySettersWithoutSeriesCopyNothing)
{
    PlotVBar chart;
    int types[2] = {5, 6};
    chart.SetLineType(types);
    chart.SetLineWidth(types);
    chart.SetLineType(nullptr);
    EXPECT_EQ(chart.GetTagSize(), 0u);
    EXPECT_EQ(chart.GetLineType(0), 0);
    EXPECT_EQ(chart.GetLineWidth(0), 1);
}

// Bar chart drawing and plot-compatible objects

TEST(PlotVBar, DrawCallsDraw2DOnceWithTheContext)
{
    TestChart chart;
    chart.Draw(nullptr);
    EXPECT_EQ(chart.draw2DCalls, 1);
    EXPECT_EQ(chart.lastDc, nullptr);
    QorPlot& base = chart;
    base.Draw(nullptr);
    EXPECT_EQ(chart.draw2DCalls, 2);
}

TEST(PlotVBar, DrawingChangesNoSettingAndNoErrorCode)
{
    TestChart chart;
    short data[2] = {3, 4};
    chart.SetDef(data);
    chart.SetDefSize(2);
    chart.SetTagSize(1);
    chart.Draw(nullptr);
    EXPECT_EQ(chart.GetException(), 0);
    EXPECT_EQ(chart.GetDefSize(), 2u);
    EXPECT_EQ(chart.GetDef(1), 4.0);
    EXPECT_EQ(chart.GetLineWidth(0), 1);
    EXPECT_EQ(data[0], 3);
}

TEST(QorPlotCompatibleObj, DefaultValueIsZeroAndCopyKeepsTheDataField)
{
    QorPlotCompatibleObj a(42);
    EXPECT_EQ(a.GetPlotValue(), 0.0);
    QorPlotCompatibleObj b(a);
    EXPECT_EQ(b.GetPlotData(), 42);
    b.SetPlotData(-3);
    EXPECT_EQ(b.GetPlotData(), -3);
    EXPECT_EQ(a.GetPlotData(), 42);
    QorPlotCompatibleObj fresh;
    EXPECT_EQ(fresh.GetPlotData(), 0);
}

TEST(QorPlotCompatibleObj, OverrideSuppliesThePlotValueThroughTheBase)
{
    Score s(12.5, 7);
    QorPlotCompatibleObj& base = s;
    EXPECT_EQ(base.GetPlotValue(), 12.5);
    EXPECT_EQ(base.GetPlotData(), 7);
}
