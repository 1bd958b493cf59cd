#include "QorDatabase.h"

#include <new>
#include <string>

const char* const kDateYearSuffix = "\xA1\x5D\xA6\x7E\xA1\x5E";
const char* const kDateMonthSuffix = "\xA1\x5D\xA4\xEB\xA1\x5E";
const char* const kDateDaySuffix = "\xA1\x5D\xA4\xE9\xA1\x5E";

namespace
{
// A name for SQL text: in double quotes with quotes inside doubled, so any name stays one name.
std::string QuoteName(const char* name)
{
    std::string out = "\"";
    for (const char* p = name; *p != 0; ++p)
    {
        if (*p == '"')
            out += '"';
        out += *p;
    }
    return out + "\"";
}

std::string Column(const char* name, const char* suffix)
{
    return std::string(name) + suffix;
}

void Grow(CDaoRecordset* rs, long count, long n, const char* field, long value)
{
    for (; count < n; ++count)
    {
        if (!rs->AddNew())
            return;
        if ((field && !rs->SetFieldValue(field, value)) || !rs->Update())
        {
            rs->CancelUpdate();
            return;
        }
    }
}

void Shrink(CDaoRecordset* rs, long count, long n)
{
    rs->MoveFirst();
    for (; count > n; --count)
    {
        if (!rs->Delete())
            return;
        rs->MoveNext();
    }
}

void Alter(CDaoRecordset* rs, const char* table, long n, const char* field, long value)
{
    if (!rs || !table || (field && !*field))
        return;
    try
    {
        std::string sql = "SELECT * FROM " + QuoteName(table);
        rs->Close();
        if (field)
        {
            sql += " WHERE " + QuoteName(field) + "=?";
            if (!rs->Open(sql.c_str(), value))
                return;
        }
        else if (!rs->Open(sql.c_str()))
        {
            return;
        }
    }
    catch (const std::bad_alloc&)
    {
        return;
    }
    if (n < 0)
        n = 0;
    const long count = GetRecordCount(rs);
    if (count < n)
        Grow(rs, count, n, field, value);
    else if (count > n)
        Shrink(rs, count, n);
    rs->MoveFirst();
}
} // namespace

long GetRecordCount(CDaoRecordset* rs)
{
    if (!rs || !rs->IsOpen())
        return -1;
    if (rs->IsBOF())
        return 0;
    rs->MoveLast();
    return rs->GetAbsolutePosition() + 1;
}

void GetFieldValue(CDaoRecordset* rs, const char* name, QorDate& d)
{
    if (!rs || !name)
        return;
    try
    {
        long localYear = 0, month = 0, day = 0;
        if (!rs->GetFieldValue(Column(name, kDateYearSuffix).c_str(), localYear) ||
            !rs->GetFieldValue(Column(name, kDateMonthSuffix).c_str(), month) ||
            !rs->GetFieldValue(Column(name, kDateDaySuffix).c_str(), day))
            return;
        d.localYear = static_cast<std::int16_t>(localYear);
        d.year = static_cast<std::int16_t>(localYear == 0 ? 0 : localYear + 1911);
        d.month = static_cast<std::int8_t>(month);
        d.day = static_cast<std::int8_t>(day);
    }
    catch (const std::bad_alloc&)
    {
    }
}

void SetFieldValue(CDaoRecordset* rs, const char* name, QorDate& d, char flag, DateAssembleType how)
{
    if (!rs || !name)
        return;
    const bool year = how == kDateYearMonthDay || how == kDateYearMonth || how == kDateYear;
    const bool month = how == kDateYearMonthDay || how == kDateYearMonth || how == kDateMonthDay || how == kDateMonth;
    const bool day = how == kDateYearMonthDay || how == kDateMonthDay || how == kDateDay;
    try
    {
        if (year || flag)
            rs->SetFieldValue(Column(name, kDateYearSuffix).c_str(), year ? static_cast<long>(d.localYear) : 0L);
        if (month || flag)
            rs->SetFieldValue(Column(name, kDateMonthSuffix).c_str(), month ? static_cast<long>(d.month) : 0L);
        if (day || flag)
            rs->SetFieldValue(Column(name, kDateDaySuffix).c_str(), day ? static_cast<long>(d.day) : 0L);
    }
    catch (const std::bad_alloc&)
    {
    }
}

void SetFieldValue(CDaoRecordset* rs, const char* name, QorString& s)
{
    if (!rs)
        return;
    const char* text = s;
    rs->SetFieldValue(name, text ? text : "");
}

void GetFieldValue(CDaoRecordset* rs, const char* name, QorString& s)
{
    if (rs)
        rs->GetFieldValue(name, s);
}

void SetFieldValue(CDaoRecordset* rs, const char* name, unsigned char v)
{
    if (rs)
        rs->SetFieldValue(name, static_cast<long>(v));
}

void GetFieldValue(CDaoRecordset* rs, const char* name, unsigned char& v)
{
    long value = 0;
    if (rs && rs->GetFieldValue(name, value))
        v = static_cast<unsigned char>(value < 0 ? 0 : value > 255 ? 255 : value);
}

void SetFieldValue(CDaoRecordset* rs, const char* name, long v)
{
    if (rs)
        rs->SetFieldValue(name, v);
}

void GetFieldValue(CDaoRecordset* rs, const char* name, long& v)
{
    if (rs)
        rs->GetFieldValue(name, v);
}

void SetFieldValue(CDaoRecordset* rs, const char* name, double v)
{
    if (rs)
        rs->SetFieldValue(name, v);
}

void GetFieldValue(CDaoRecordset* rs, const char* name, double& v)
{
    if (rs)
        rs->GetFieldValue(name, v);
}

void AlterRecordNum(CDaoRecordset* rs, const char* table, long n)
{
    Alter(rs, table, n, nullptr, 0);
}

void AlterRecordNum(CDaoRecordset* rs, const char* table, long n, const char* field, long value)
{
    if (field)
        Alter(rs, table, n, field, value);
}

void QueryFillCombo(CDaoDatabase* db, CComboBox* box, CString sql, const char* field)
{
    if (!db || !box || !field)
        return;
    CDaoRecordset rs(db);
    if (!rs.Open(sql) || !rs.HasField(field))
        return;
    for (; !rs.IsEOF(); rs.MoveNext())
    {
        const int type = rs.GetFieldType(field);
        if (type == CDaoRecordset::kFieldInteger || type == CDaoRecordset::kFieldFloat)
        {
            long value = 0;
            rs.GetFieldValue(field, value);
            box->AddString(QorString(value));
        }
        else
        {
            QorString text;
            rs.GetFieldValue(field, text);
            box->AddString(text);
        }
    }
}
