#include "test_util.h"

#include "qor/files.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;

// The three columns of the date field "d", spelt out in Big5 bytes: （ = A1 5D, ） = A1 5E, 年 = A6 7E,
// 月 = A4 EB, 日 = A4 E9.
const std::string kYearColumn = "d\xA1\x5D\xA6\x7E\xA1\x5E";
const std::string kMonthColumn = "d\xA1\x5D\xA4\xEB\xA1\x5E";
const std::string kDayColumn = "d\xA1\x5D\xA4\xE9\xA1\x5E";

std::string Str(const QorString& s)
{
    const char* text = s;
    return text ? std::string(text, s.GetLength()) : std::string();
}

std::vector<std::string> Items(const CComboBox& box)
{
    std::vector<std::string> items;
    for (int i = 0; i < box.GetCount(); ++i)
    {
        QorString text;
        box.GetLBText(i, text);
        items.push_back(Str(text));
    }
    return items;
}

// Each test gets a new database file in the test's temporary directory.
class DatabaseTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = fs::absolute(qortest::TempPath("db.sqlite")).string();
        std::remove(m_path.c_str());
        ASSERT_EQ(m_db.Open(m_path.c_str()), 1);
    }
    void TearDown() override
    {
        m_db.Close();
        std::remove(m_path.c_str());
    }
    void Exec(const std::string& sql) { ASSERT_EQ(m_db.Execute(sql.c_str()), 1) << sql; }

    // The values of one column in rowid order, read through a read-only query.
    std::vector<std::string> Column(const std::string& sql, const char* field)
    {
        std::vector<std::string> values;
        CDaoRecordset rs(&m_db);
        EXPECT_EQ(rs.Open(sql.c_str()), 1) << sql;
        for (; !rs.IsEOF(); rs.MoveNext())
        {
            QorString text;
            rs.GetFieldValue(field, text);
            values.push_back(Str(text));
        }
        return values;
    }

    void MakeDateTable()
    {
        Exec("CREATE TABLE dates (id INTEGER PRIMARY KEY, \"" + kYearColumn + "\" INTEGER, \"" + kMonthColumn +
             "\" INTEGER, \"" + kDayColumn + "\" INTEGER)");
    }

    std::string m_path;
    CDaoDatabase m_db;
};

class CDaoDatabaseTest : public DatabaseTest
{
};
class CDaoRecordsetTest : public DatabaseTest
{
};
class GetRecordCountTest : public DatabaseTest
{
};
class DateFieldTest : public DatabaseTest
{
};
class ValueFieldTest : public DatabaseTest
{
};
class AlterRecordNumTest : public DatabaseTest
{
};
class QueryFillComboTest : public DatabaseTest
{
};
} // namespace

// ---- CDaoDatabase

TEST_F(CDaoDatabaseTest, OpenCreatesTheFileAndExecuteWritesToIt)
{
    EXPECT_TRUE(fs::exists(m_path));
    EXPECT_EQ(m_db.Execute("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (7); INSERT INTO t VALUES (8)"), 1);
    m_db.Close();
    EXPECT_EQ(m_db.IsOpen(), 0);
    CDaoDatabase again;
    ASSERT_EQ(again.Open(m_path.c_str()), 1);
    CDaoRecordset rs(&again);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    long a = 0;
    EXPECT_EQ(rs.GetFieldValue("a", a), 1);
    EXPECT_EQ(a, 7);
}

TEST_F(CDaoDatabaseTest, ExecuteFailsOnBadSqlAndWhenClosed)
{
    EXPECT_EQ(m_db.Execute("CREATE TABLE t (a); INSERT INTO missing VALUES (1); INSERT INTO t VALUES (1)"), 0);
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.GetCount(), 0);
    EXPECT_EQ(m_db.Execute(nullptr), 0);
    m_db.Close();
    EXPECT_EQ(m_db.Execute("CREATE TABLE u (a)"), 0);
}

TEST_F(CDaoDatabaseTest, OpenFailsInAMissingFolder)
{
    CDaoDatabase db;
    EXPECT_EQ(db.Open((m_path + ".missing/x.sqlite").c_str()), 0);
    EXPECT_EQ(db.IsOpen(), 0);
    EXPECT_EQ(db.Open(nullptr), 0);
}

// ---- CDaoRecordset

TEST_F(CDaoRecordsetTest, WalksTheRecordsBothWaysWithBOFAndEOF)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v INTEGER); INSERT INTO t (v) VALUES (10), (20), (30)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.CanUpdate(), 1);
    EXPECT_EQ(rs.GetCount(), 3);
    long v = 0;
    EXPECT_EQ(rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(rs.IsBOF(), 0);
    EXPECT_EQ(rs.IsEOF(), 0);
    rs.GetFieldValue("v", v);
    EXPECT_EQ(v, 10);
    EXPECT_EQ(rs.MoveNext(), 1);
    EXPECT_EQ(rs.MoveNext(), 1);
    rs.GetFieldValue("v", v);
    EXPECT_EQ(v, 30);
    EXPECT_EQ(rs.GetAbsolutePosition(), 2);
    EXPECT_EQ(rs.MoveNext(), 0);
    EXPECT_EQ(rs.IsEOF(), 1);
    EXPECT_EQ(rs.GetAbsolutePosition(), -1);
    EXPECT_EQ(rs.GetFieldValue("v", v), 0);
    EXPECT_EQ(rs.MoveNext(), 0);
    EXPECT_EQ(rs.MovePrev(), 1);
    EXPECT_EQ(rs.GetAbsolutePosition(), 2);
    EXPECT_EQ(rs.MoveFirst(), 1);
    EXPECT_EQ(rs.MovePrev(), 0);
    EXPECT_EQ(rs.IsBOF(), 1);
    EXPECT_EQ(rs.IsEOF(), 0);
    EXPECT_EQ(rs.MoveLast(), 1);
    rs.GetFieldValue("v", v);
    EXPECT_EQ(v, 30);
}

TEST_F(CDaoRecordsetTest, EmptySetIsAtBOFAndEOFAndDoesNotMove)
{
    Exec("CREATE TABLE t (v INTEGER)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.IsBOF(), 1);
    EXPECT_EQ(rs.IsEOF(), 1);
    EXPECT_EQ(rs.MoveFirst(), 0);
    EXPECT_EQ(rs.MoveLast(), 0);
    EXPECT_EQ(rs.MoveNext(), 0);
    EXPECT_EQ(rs.MovePrev(), 0);
    EXPECT_EQ(rs.GetAbsolutePosition(), -1);
    EXPECT_EQ(rs.GetFieldCount(), 1);
    EXPECT_EQ(Str(rs.GetFieldName(0)), "v");
}

TEST_F(CDaoRecordsetTest, OpenRefusesBadSqlSecondStatementsAndChanges)
{
    Exec("CREATE TABLE t (v INTEGER); INSERT INTO t VALUES (1)");
    CDaoRecordset rs(&m_db);
    EXPECT_EQ(rs.Open("SELECT * FROM missing"), 0);
    EXPECT_EQ(rs.Open("SELECT * FROM t; DROP TABLE t"), 0);
    EXPECT_EQ(rs.Open("DELETE FROM t"), 0);
    EXPECT_EQ(rs.Open(nullptr), 0);
    EXPECT_EQ(rs.IsOpen(), 0);
    EXPECT_EQ(Column("SELECT v FROM t", "v"), std::vector<std::string>{"1"});
    CDaoRecordset noDatabase;
    EXPECT_EQ(noDatabase.Open("SELECT * FROM t"), 0);
    m_db.Close();
    EXPECT_EQ(rs.Open("SELECT * FROM t"), 0);
}

TEST_F(CDaoRecordsetTest, ReadsValuesWithTheEnginesConversions)
{
    Exec("CREATE TABLE t (i, r, s, n, x); INSERT INTO t VALUES (42, 2.75, '12abc', NULL, -3.5)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.GetFieldType("i"), CDaoRecordset::kFieldInteger);
    EXPECT_EQ(rs.GetFieldType("r"), CDaoRecordset::kFieldFloat);
    EXPECT_EQ(rs.GetFieldType("s"), CDaoRecordset::kFieldText);
    EXPECT_EQ(rs.GetFieldType("n"), CDaoRecordset::kFieldNull);
    EXPECT_EQ(rs.GetFieldType("zz"), CDaoRecordset::kFieldMissing);
    long l = -1;
    double d = -1;
    QorString s;
    EXPECT_EQ(rs.GetFieldValue("i", s), 1);
    EXPECT_EQ(Str(s), "42");
    EXPECT_EQ(rs.GetFieldValue("r", l), 1);
    EXPECT_EQ(l, 2);
    EXPECT_EQ(rs.GetFieldValue("x", l), 1);
    EXPECT_EQ(l, -3);
    EXPECT_EQ(rs.GetFieldValue("s", l), 1);
    EXPECT_EQ(l, 12);
    EXPECT_EQ(rs.GetFieldValue("r", s), 1);
    EXPECT_EQ(Str(s), "2.75");
    EXPECT_EQ(rs.GetFieldValue("n", d), 1);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(rs.GetFieldValue("n", s), 1);
    EXPECT_EQ(Str(s), "");
    l = 99;
    EXPECT_EQ(rs.GetFieldValue("missing", l), 0);
    EXPECT_EQ(l, 99);
}

TEST_F(CDaoRecordsetTest, FieldNamesIgnoreAsciiCase)
{
    Exec("CREATE TABLE t (Score INTEGER); INSERT INTO t VALUES (5)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("select * from T"), 1);
    long v = 0;
    EXPECT_EQ(rs.GetFieldValue("SCORE", v), 1);
    EXPECT_EQ(v, 5);
    EXPECT_EQ(rs.HasField("score"), 1);
    EXPECT_EQ(rs.HasField("scores"), 0);
}

TEST_F(CDaoRecordsetTest, EditAndUpdateWriteOnlyTheChangedFields)
{
    Exec("CREATE TABLE t (a INTEGER, b TEXT); INSERT INTO t VALUES (1, 'one'), (2, 'two')");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.SetFieldValue("a", 5L), 0);
    ASSERT_EQ(rs.MoveNext(), 1);
    ASSERT_EQ(rs.Edit(), 1);
    EXPECT_EQ(rs.GetEditMode(), CDaoRecordset::kEditInProgress);
    EXPECT_EQ(rs.SetFieldValue("b", "zwei"), 1);
    QorString s;
    rs.GetFieldValue("b", s);
    EXPECT_EQ(Str(s), "zwei");
    EXPECT_EQ(rs.SetFieldValue("nope", 1L), 0);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(rs.GetEditMode(), CDaoRecordset::kEditNone);
    rs.GetFieldValue("b", s);
    EXPECT_EQ(Str(s), "zwei");
    EXPECT_EQ(Column("SELECT a || ':' || b AS ab FROM t ORDER BY rowid", "ab"),
              (std::vector<std::string>{"1:one", "2:zwei"}));
}

TEST_F(CDaoRecordsetTest, AMoveDropsAnUnfinishedEdit)
{
    Exec("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1), (2)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    ASSERT_EQ(rs.Edit(), 1);
    rs.SetFieldValue("a", 100L);
    rs.MoveNext();
    EXPECT_EQ(rs.GetEditMode(), CDaoRecordset::kEditNone);
    EXPECT_EQ(rs.Update(), 0);
    EXPECT_EQ(Column("SELECT a FROM t", "a"), (std::vector<std::string>{"1", "2"}));
}

TEST_F(CDaoRecordsetTest, AddNewAppendsAndKeepsTheCurrentRecord)
{
    Exec("CREATE TABLE t (a INTEGER, b TEXT DEFAULT 'dflt'); INSERT INTO t VALUES (1, 'x')");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    ASSERT_EQ(rs.AddNew(), 1);
    long a = -1;
    EXPECT_EQ(rs.GetFieldValue("a", a), 1);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(rs.GetFieldType("a"), CDaoRecordset::kFieldNull);
    rs.SetFieldValue("a", 2.5);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(rs.GetCount(), 2);
    EXPECT_EQ(rs.GetAbsolutePosition(), 0);
    rs.GetFieldValue("a", a);
    EXPECT_EQ(a, 1);
    ASSERT_EQ(rs.MoveLast(), 1);
    QorString b;
    rs.GetFieldValue("b", b);
    EXPECT_EQ(Str(b), "dflt");
    double value = 0;
    rs.GetFieldValue("a", value);
    EXPECT_EQ(value, 2.5);
}

TEST_F(CDaoRecordsetTest, AddNewAtEOFStaysAtEOF)
{
    Exec("CREATE TABLE t (a INTEGER)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    ASSERT_EQ(rs.AddNew(), 1);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(rs.IsEOF(), 1);
    EXPECT_EQ(rs.IsBOF(), 0);
    EXPECT_EQ(rs.MovePrev(), 1);
    EXPECT_EQ(rs.GetAbsolutePosition(), 0);
}

TEST_F(CDaoRecordsetTest, AFailedUpdateKeepsEditing)
{
    Exec("CREATE TABLE t (a INTEGER NOT NULL)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    ASSERT_EQ(rs.AddNew(), 1);
    EXPECT_EQ(rs.Update(), 0);
    EXPECT_EQ(rs.GetEditMode(), CDaoRecordset::kEditAdd);
    rs.SetFieldValue("a", 3L);
    EXPECT_EQ(rs.Update(), 1);
    EXPECT_EQ(Column("SELECT a FROM t", "a"), std::vector<std::string>{"3"});
}

TEST_F(CDaoRecordsetTest, DeleteLeavesNoCurrentRecordUntilMoveNextReachesTheFollowingOne)
{
    Exec("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1), (2), (3)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    rs.MoveNext();
    ASSERT_EQ(rs.Delete(), 1);
    EXPECT_EQ(rs.GetAbsolutePosition(), -1);
    long a = 0;
    EXPECT_EQ(rs.GetFieldValue("a", a), 0);
    EXPECT_EQ(rs.Delete(), 0);
    EXPECT_EQ(rs.GetCount(), 2);
    ASSERT_EQ(rs.MoveNext(), 1);
    rs.GetFieldValue("a", a);
    EXPECT_EQ(a, 3);
    EXPECT_EQ(rs.GetAbsolutePosition(), 1);
    EXPECT_EQ(Column("SELECT a FROM t", "a"), (std::vector<std::string>{"1", "3"}));
}

TEST_F(CDaoRecordsetTest, WhereClauseTakesBoundParametersAndStaysUpdatable)
{
    Exec("CREATE TABLE t (k INTEGER, v TEXT); INSERT INTO t VALUES (1, 'a'), (2, 'b'), (1, 'c')");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t WHERE k=?", 1L), 1);
    EXPECT_EQ(rs.CanUpdate(), 1);
    EXPECT_EQ(rs.GetCount(), 2);
    rs.MoveLast();
    QorString v;
    rs.GetFieldValue("v", v);
    EXPECT_EQ(Str(v), "c");
    EXPECT_EQ(rs.Open("SELECT * FROM t WHERE k=?"), 0);
    EXPECT_EQ(rs.Open("SELECT * FROM t WHERE k=? AND v=?", std::vector<long>{2, 0}), 1);
    EXPECT_EQ(rs.GetCount(), 0);
}

TEST_F(CDaoRecordsetTest, OtherQueriesAreReadOnlySnapshots)
{
    Exec("CREATE TABLE t (id INTEGER, name TEXT); INSERT INTO t VALUES (1, 'a'), (2, 'b'), (3, 'c')");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT name FROM t ORDER BY id DESC"), 1);
    EXPECT_EQ(rs.CanUpdate(), 0);
    EXPECT_EQ(rs.AddNew(), 0);
    EXPECT_EQ(rs.Edit(), 0);
    EXPECT_EQ(rs.Delete(), 0);
    EXPECT_EQ(rs.GetCount(), 3);
    QorString name;
    rs.GetFieldValue("name", name);
    EXPECT_EQ(Str(name), "c");
    rs.MoveLast();
    rs.GetFieldValue("name", name);
    EXPECT_EQ(Str(name), "a");
    EXPECT_EQ(Column("SELECT * FROM t AS x WHERE x.id > 1", "name"), (std::vector<std::string>{"b", "c"}));
}

TEST_F(CDaoRecordsetTest, QuotedTableNameWithAQuoteIsUpdatable)
{
    Exec("CREATE TABLE \"we\"\"ird\" (a INTEGER); INSERT INTO \"we\"\"ird\" VALUES (1)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM \"we\"\"ird\""), 1);
    EXPECT_EQ(rs.CanUpdate(), 1);
    ASSERT_EQ(rs.Edit(), 1);
    rs.SetFieldValue("a", 9L);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(Column("SELECT a FROM \"we\"\"ird\"", "a"), std::vector<std::string>{"9"});
}

TEST_F(CDaoRecordsetTest, AColumnNamedRowidDoesNotRedirectChanges)
{
    Exec("CREATE TABLE t (rowid INTEGER, v TEXT); INSERT INTO t VALUES (5, 'a'), (5, 'b'), (5, 'c')");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(rs.CanUpdate(), 1);
    rs.MoveNext();
    ASSERT_EQ(rs.Edit(), 1);
    rs.SetFieldValue("v", "B");
    ASSERT_EQ(rs.Update(), 1);
    rs.MoveNext();
    ASSERT_EQ(rs.Delete(), 1);
    EXPECT_EQ(Column("SELECT rowid || v AS x FROM t ORDER BY _rowid_", "x"), (std::vector<std::string>{"5a", "5B"}));
}

// ---- CComboBox

TEST(CComboBox, KeepsTextsInOrderAndRefusesIndicesOutOfRange)
{
    CComboBox box;
    EXPECT_EQ(box.AddString("one"), 0);
    EXPECT_EQ(box.AddString(nullptr), 1);
    EXPECT_EQ(box.AddString("\xA4\xA4"), 2);
    EXPECT_EQ(box.GetCount(), 3);
    QorString text("untouched");
    EXPECT_EQ(box.GetLBText(0, text), 3);
    EXPECT_EQ(Str(text), "one");
    EXPECT_EQ(box.GetLBTextLen(1), 0);
    EXPECT_EQ(box.GetLBTextLen(2), 2);
    text = "untouched";
    EXPECT_EQ(box.GetLBText(3, text), -1);
    EXPECT_EQ(box.GetLBText(-1, text), -1);
    EXPECT_EQ(Str(text), "untouched");
    box.ResetContent();
    EXPECT_EQ(box.GetCount(), 0);
}

// ---- GetRecordCount

TEST_F(GetRecordCountTest, NotOpenOrNullIsMinusOne)
{
    CDaoRecordset rs(&m_db);
    EXPECT_EQ(GetRecordCount(&rs), -1);
    EXPECT_EQ(GetRecordCount(nullptr), -1);
}

TEST_F(GetRecordCountTest, EmptySetIsZero)
{
    Exec("CREATE TABLE t (a INTEGER)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(GetRecordCount(&rs), 0);
}

TEST_F(GetRecordCountTest, CountsAndLeavesTheSetOnItsLastRecord)
{
    Exec("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1), (2), (3), (4)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    EXPECT_EQ(GetRecordCount(&rs), 4);
    EXPECT_EQ(rs.GetAbsolutePosition(), 3);
    ASSERT_EQ(rs.Open("SELECT a FROM t WHERE a > 2"), 1);
    EXPECT_EQ(GetRecordCount(&rs), 2);
}

TEST_F(GetRecordCountTest, ASetMovedBeforeItsFirstRecordReportsZero)
{
    Exec("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1), (2)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    rs.MovePrev();
    EXPECT_EQ(GetRecordCount(&rs), 0);
    rs.MoveFirst();
    EXPECT_EQ(GetRecordCount(&rs), 2);
}

// ---- Date fields

TEST_F(DateFieldTest, ColumnsCarryTheBig5SuffixBytes)
{
    EXPECT_STREQ(kDateYearSuffix, "\xA1\x5D\xA6\x7E\xA1\x5E");
    EXPECT_STREQ(kDateMonthSuffix, "\xA1\x5D\xA4\xEB\xA1\x5E");
    EXPECT_STREQ(kDateDaySuffix, "\xA1\x5D\xA4\xE9\xA1\x5E");
    MakeDateTable();
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    ASSERT_EQ(rs.GetFieldCount(), 4);
    EXPECT_EQ(Str(rs.GetFieldName(1)), kYearColumn);
    EXPECT_EQ(Str(rs.GetFieldName(2)), kMonthColumn);
    EXPECT_EQ(Str(rs.GetFieldName(3)), kDayColumn);
}

TEST_F(DateFieldTest, GetReadsTheLocalYearMonthAndDayAndKeepsTheTime)
{
    MakeDateTable();
    Exec("INSERT INTO dates VALUES (1, 88, 5, 1)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    QorDate d;
    d.Initialize(2020, 1, 2, 13, 45, 30, 3);
    GetFieldValue(&rs, "d", d);
    EXPECT_EQ(d.year, 1999);
    EXPECT_EQ(d.localYear, 88);
    EXPECT_EQ(d.month, 5);
    EXPECT_EQ(d.day, 1);
    EXPECT_EQ(d.hour, 13);
    EXPECT_EQ(d.minute, 45);
    EXPECT_EQ(d.second, 30);
    EXPECT_EQ(d.dayOfWeek, 3);
}

TEST_F(DateFieldTest, LocalYearZeroGivesYearZero)
{
    MakeDateTable();
    Exec("INSERT INTO dates VALUES (1, 0, 0, 0), (2, NULL, NULL, NULL)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    QorDate d;
    d.Initialize(2020, 1, 2, 0, 0, 0, 0);
    GetFieldValue(&rs, "d", d);
    EXPECT_EQ(d.year, 0);
    EXPECT_EQ(d.localYear, 0);
    EXPECT_EQ(d.month, 0);
    EXPECT_EQ(d.day, 0);
    EXPECT_EQ(d.IsEmpty(), 1);
    rs.MoveNext();
    d.Initialize(2020, 1, 2, 0, 0, 0, 0);
    GetFieldValue(&rs, "d", d);
    EXPECT_EQ(d.year, 0);
    EXPECT_EQ(d.month, 0);
}

TEST_F(DateFieldTest, AMissingColumnOrNoRecordLeavesTheDateAlone)
{
    Exec("CREATE TABLE partial (\"" + kYearColumn + "\" INTEGER, \"" + kMonthColumn + "\" INTEGER)");
    Exec("INSERT INTO partial VALUES (100, 4)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM partial"), 1);
    QorDate d;
    d.Initialize(2020, 1, 2, 0, 0, 0, 0);
    GetFieldValue(&rs, "d", d);
    EXPECT_EQ(d.year, 2020);
    EXPECT_EQ(d.localYear, 109);
    EXPECT_EQ(d.month, 1);
    rs.MoveNext();
    MakeDateTable();
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    GetFieldValue(&rs, "d", d);
    GetFieldValue(nullptr, "d", d);
    EXPECT_EQ(d.year, 2020);
    EXPECT_EQ(d.day, 2);
}

TEST_F(DateFieldTest, SetWritesTheLocalYearAndRoundTrips)
{
    MakeDateTable();
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    QorDate d;
    d.Initialize(2024, 5, 20, 0, 0, 0, 0);
    ASSERT_EQ(rs.AddNew(), 1);
    SetFieldValue(&rs, "d", d, 0, kDateYearMonthDay);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(Column("SELECT * FROM dates", kYearColumn.c_str()), std::vector<std::string>{"113"});
    EXPECT_EQ(Column("SELECT * FROM dates", kMonthColumn.c_str()), std::vector<std::string>{"5"});
    EXPECT_EQ(Column("SELECT * FROM dates", kDayColumn.c_str()), std::vector<std::string>{"20"});
    rs.MoveLast();
    QorDate back;
    GetFieldValue(&rs, "d", back);
    EXPECT_EQ(back.year, 2024);
    EXPECT_EQ(back.localYear, 113);
    EXPECT_EQ(back.month, 5);
    EXPECT_EQ(back.day, 20);
}

TEST_F(DateFieldTest, AnEmptyDateIsStoredAsZeros)
{
    MakeDateTable();
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    QorDate empty;
    ASSERT_EQ(rs.AddNew(), 1);
    SetFieldValue(&rs, "d", empty);
    ASSERT_EQ(rs.Update(), 1);
    EXPECT_EQ(Column("SELECT \"" + kYearColumn + "\" || '/' || \"" + kMonthColumn + "\" || '/' || \"" + kDayColumn +
                         "\" AS ymd FROM dates",
                     "ymd"),
              std::vector<std::string>{"0/0/0"});
}

TEST_F(DateFieldTest, EachAssembleTypeWritesOnlyItsParts)
{
    MakeDateTable();
    const std::string ymd = "SELECT \"" + kYearColumn + "\" || '/' || \"" + kMonthColumn + "\" || '/' || \"" +
                            kDayColumn + "\" AS ymd FROM dates";
    const struct
    {
        DateAssembleType how;
        const char* expected;
    } cases[] = {
        {kDateYearMonthDay, "88/5/1"}, {kDateYearMonth, "88/5/7"}, {kDateMonthDay, "7/5/1"},
        {kDateYear, "88/7/7"},         {kDateMonth, "7/5/7"},      {kDateDay, "7/7/1"},
    };
    QorDate d;
    d.Initialize(1999, 5, 1, 0, 0, 0, 0);
    for (const auto& c : cases)
    {
        Exec("DELETE FROM dates; INSERT INTO dates VALUES (1, 7, 7, 7)");
        CDaoRecordset rs(&m_db);
        ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
        ASSERT_EQ(rs.Edit(), 1);
        SetFieldValue(&rs, "d", d, 0, c.how);
        ASSERT_EQ(rs.Update(), 1);
        EXPECT_EQ(Column(ymd, "ymd"), std::vector<std::string>{c.expected}) << "how " << c.how;
    }
}

TEST_F(DateFieldTest, FlagClearsThePartsNotChosen)
{
    MakeDateTable();
    const std::string ymd = "SELECT \"" + kYearColumn + "\" || '/' || \"" + kMonthColumn + "\" || '/' || \"" +
                            kDayColumn + "\" AS ymd FROM dates";
    const struct
    {
        DateAssembleType how;
        const char* expected;
    } cases[] = {
        {kDateYearMonthDay, "88/5/1"}, {kDateYearMonth, "88/5/0"}, {kDateMonthDay, "0/5/1"},
        {kDateYear, "88/0/0"},         {kDateMonth, "0/5/0"},      {kDateDay, "0/0/1"},
    };
    QorDate d;
    d.Initialize(88, 5, 1, 0, 0, 0, 0);
    for (const auto& c : cases)
    {
        Exec("DELETE FROM dates; INSERT INTO dates VALUES (1, 7, 7, 7)");
        CDaoRecordset rs(&m_db);
        ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
        ASSERT_EQ(rs.Edit(), 1);
        SetFieldValue(&rs, "d", d, 1, c.how);
        ASSERT_EQ(rs.Update(), 1);
        EXPECT_EQ(Column(ymd, "ymd"), std::vector<std::string>{c.expected}) << "how " << c.how;
    }
}

TEST_F(DateFieldTest, SetOutsideEditChangesNothing)
{
    MakeDateTable();
    Exec("INSERT INTO dates VALUES (1, 7, 7, 7)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM dates"), 1);
    QorDate d;
    d.Initialize(1999, 5, 1, 0, 0, 0, 0);
    SetFieldValue(&rs, "d", d, 1, kDateYearMonthDay);
    EXPECT_EQ(rs.Update(), 0);
    EXPECT_EQ(Column("SELECT * FROM dates", kYearColumn.c_str()), std::vector<std::string>{"7"});
}

// ---- Text and numeric fields

TEST_F(ValueFieldTest, TextRoundTripsBig5BytesAndQuotes)
{
    Exec("CREATE TABLE t (s TEXT)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    QorString text("\xB3\x5C\xA4\xA4 'quoted' \"double\"");
    ASSERT_EQ(rs.AddNew(), 1);
    SetFieldValue(&rs, "s", text);
    ASSERT_EQ(rs.Update(), 1);
    rs.MoveFirst();
    QorString back;
    GetFieldValue(&rs, "s", back);
    EXPECT_EQ(Str(back), "\xB3\x5C\xA4\xA4 'quoted' \"double\"");
    EXPECT_EQ(back.GetLength(), 22u);
}

TEST_F(ValueFieldTest, LongAndDoubleRoundTrip)
{
    Exec("CREATE TABLE t (l INTEGER, r REAL, big INTEGER)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    ASSERT_EQ(rs.AddNew(), 1);
    SetFieldValue(&rs, "l", -123456L);
    SetFieldValue(&rs, "r", 0.1 + 0.2);
    SetFieldValue(&rs, "big", 5000000000L);
    ASSERT_EQ(rs.Update(), 1);
    rs.MoveFirst();
    long l = 0, big = 0;
    double r = 0;
    GetFieldValue(&rs, "l", l);
    GetFieldValue(&rs, "r", r);
    GetFieldValue(&rs, "big", big);
    EXPECT_EQ(l, -123456);
    EXPECT_EQ(r, 0.1 + 0.2);
    EXPECT_EQ(big, 5000000000L);
}

TEST_F(ValueFieldTest, UnsignedCharRoundTripsAndClampsWideValues)
{
    Exec("CREATE TABLE t (b INTEGER); INSERT INTO t VALUES (300), (-5)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    unsigned char b = 1;
    GetFieldValue(&rs, "b", b);
    EXPECT_EQ(b, 255);
    rs.MoveNext();
    GetFieldValue(&rs, "b", b);
    EXPECT_EQ(b, 0);
    ASSERT_EQ(rs.AddNew(), 1);
    SetFieldValue(&rs, "b", static_cast<unsigned char>(200));
    ASSERT_EQ(rs.Update(), 1);
    rs.MoveLast();
    GetFieldValue(&rs, "b", b);
    EXPECT_EQ(b, 200);
}

TEST_F(ValueFieldTest, NullReadsAsZeroAndEmptyAndMissingFieldsLeaveValues)
{
    Exec("CREATE TABLE t (n); INSERT INTO t VALUES (NULL)");
    CDaoRecordset rs(&m_db);
    ASSERT_EQ(rs.Open("SELECT * FROM t"), 1);
    long l = 5;
    double d = 5;
    unsigned char b = 5;
    QorString s("x");
    GetFieldValue(&rs, "n", l);
    GetFieldValue(&rs, "n", d);
    GetFieldValue(&rs, "n", b);
    GetFieldValue(&rs, "n", s);
    EXPECT_EQ(l, 0);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(b, 0);
    EXPECT_EQ(Str(s), "");
    l = 5;
    s = "x";
    GetFieldValue(&rs, "other", l);
    GetFieldValue(&rs, "other", s);
    GetFieldValue(nullptr, "n", l);
    EXPECT_EQ(l, 5);
    EXPECT_EQ(Str(s), "x");
}

// ---- AlterRecordNum

TEST_F(AlterRecordNumTest, GrowsWithDefaultRecordsAndStandsOnTheFirst)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v INTEGER DEFAULT 42); INSERT INTO t (v) VALUES (1)");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "t", 4);
    EXPECT_EQ(rs.IsOpen(), 1);
    EXPECT_EQ(rs.GetAbsolutePosition(), 0);
    EXPECT_EQ(Column("SELECT v FROM t ORDER BY id", "v"), (std::vector<std::string>{"1", "42", "42", "42"}));
}

TEST_F(AlterRecordNumTest, ShrinksByDeletingFromTheFirstRecord)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY); INSERT INTO t VALUES (1), (2), (3), (4), (5)");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "t", 2);
    EXPECT_EQ(Column("SELECT id FROM t ORDER BY id", "id"), (std::vector<std::string>{"4", "5"}));
    EXPECT_EQ(rs.GetCount(), 2);
    EXPECT_EQ(rs.GetAbsolutePosition(), 0);
}

TEST_F(AlterRecordNumTest, SameCountChangesNothingAndNegativeEmpties)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY); INSERT INTO t VALUES (1), (2)");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "t", 2);
    EXPECT_EQ(Column("SELECT id FROM t", "id"), (std::vector<std::string>{"1", "2"}));
    AlterRecordNum(&rs, "t", -3);
    EXPECT_EQ(Column("SELECT id FROM t", "id"), std::vector<std::string>{});
    EXPECT_EQ(rs.IsEOF(), 1);
}

TEST_F(AlterRecordNumTest, FilteredFormCountsOnlyMatchingRecordsAndAppendsTheValue)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY, cls INTEGER, name TEXT DEFAULT 'new');"
         "INSERT INTO t (cls, name) VALUES (1, 'a'), (2, 'b'), (1, 'c')");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "t", 4, "cls", 1);
    EXPECT_EQ(Column("SELECT cls || name AS x FROM t ORDER BY id", "x"),
              (std::vector<std::string>{"1a", "2b", "1c", "1new", "1new"}));
    EXPECT_EQ(rs.GetCount(), 4);
}

TEST_F(AlterRecordNumTest, FilteredFormDeletesOnlyMatchingRecordsFromTheFirst)
{
    Exec("CREATE TABLE t (id INTEGER PRIMARY KEY, cls INTEGER);"
         "INSERT INTO t (cls) VALUES (1), (2), (1), (2), (1)");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "t", 1, "cls", 1);
    EXPECT_EQ(Column("SELECT id FROM t ORDER BY id", "id"), (std::vector<std::string>{"2", "4", "5"}));
    AlterRecordNum(&rs, "t", 0, "cls", 2);
    EXPECT_EQ(Column("SELECT id FROM t ORDER BY id", "id"), std::vector<std::string>{"5"});
}

TEST_F(AlterRecordNumTest, NamesWithQuotesAreQuotedNotInjected)
{
    Exec("CREATE TABLE keep (a INTEGER); INSERT INTO keep VALUES (1);"
         "CREATE TABLE \"o\"\"k\" (\"c\"\"ol\" INTEGER)");
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "keep\"; DROP TABLE keep; --", 0);
    EXPECT_EQ(rs.IsOpen(), 0);
    // The engine reads a quoted name that is no column as a text, so this filter matches nothing, and the
    // record to append has no such field: nothing is written.
    AlterRecordNum(&rs, "keep", 1, "a\"=1 OR \"a", 5);
    EXPECT_EQ(rs.GetCount(), 0);
    EXPECT_EQ(Column("SELECT a FROM keep", "a"), std::vector<std::string>{"1"});
    AlterRecordNum(&rs, "o\"k", 2, "c\"ol", 9);
    EXPECT_EQ(rs.IsOpen(), 1);
    EXPECT_EQ(Column("SELECT * FROM \"o\"\"k\"", "c\"ol"), (std::vector<std::string>{"9", "9"}));
}

TEST_F(AlterRecordNumTest, MissingTableOrNullArgumentsDoNothing)
{
    CDaoRecordset rs(&m_db);
    AlterRecordNum(&rs, "missing", 3);
    EXPECT_EQ(rs.IsOpen(), 0);
    AlterRecordNum(nullptr, "missing", 3);
    AlterRecordNum(&rs, nullptr, 3);
    AlterRecordNum(&rs, "missing", 3, nullptr, 1);
    EXPECT_EQ(rs.IsOpen(), 0);
}

// ---- QueryFillCombo

TEST_F(QueryFillComboTest, NumbersAreShownAsDecimalText)
{
    Exec("CREATE TABLE t (n); INSERT INTO t VALUES (7), (-42), (5000000000), (3.9), (-2.5)");
    CComboBox box;
    QueryFillCombo(&m_db, &box, "SELECT * FROM t", "n");
    EXPECT_EQ(Items(box), (std::vector<std::string>{"7", "-42", "5000000000", "3", "-2"}));
}

TEST_F(QueryFillComboTest, TextIsShownAsItIsAndNullAsEmpty)
{
    Exec("CREATE TABLE t (id INTEGER, s TEXT); INSERT INTO t VALUES (2, '\xB3\x5C\xA4\xA4'), (1, 'plain'), (3, NULL)");
    CComboBox box;
    box.AddString("first");
    QueryFillCombo(&m_db, &box, "SELECT s FROM t ORDER BY id", "s");
    EXPECT_EQ(Items(box), (std::vector<std::string>{"first", "plain", "\xB3\x5C\xA4\xA4", ""}));
}

TEST_F(QueryFillComboTest, BadSqlMissingFieldOrNullArgumentsAddNothing)
{
    Exec("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1)");
    CComboBox box;
    QueryFillCombo(&m_db, &box, "SELECT * FROM missing", "a");
    QueryFillCombo(&m_db, &box, "SELECT * FROM t", "b");
    QueryFillCombo(&m_db, &box, "SELECT * FROM t", nullptr);
    QueryFillCombo(nullptr, &box, "SELECT * FROM t", "a");
    QueryFillCombo(&m_db, nullptr, "SELECT * FROM t", "a");
    EXPECT_EQ(box.GetCount(), 0);
    QueryFillCombo(&m_db, &box, CString("SELECT * FROM t"), "A");
    EXPECT_EQ(Items(box), std::vector<std::string>{"1"});
}
