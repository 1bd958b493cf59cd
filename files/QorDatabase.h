#pragma once

#include "core/QorExport.h"

#include "platform/QorDao.h"
#include "qor/core.h"

// Helpers that keep simple records in a database through CDaoRecordset and show a column in a combo box.
//
// A date field is three integer columns: name + "（年）" (the Minguo year, Western year - 1911, 0 for none),
// name + "（月）" and name + "（日）", the suffixes in Big5 like every text of the library.
// The Set helpers write through CDaoRecordset::SetFieldValue: call AddNew or Edit before them and Update after.
// The Get helpers read the current record and leave the value untouched when the field cannot be read
// (no such field, no current record, a null record set); a null field reads as 0 or the empty text.

/// Big5 suffixes of the three columns of a date field: "（年）", "（月）", "（日）".
extern QOR_API const char* const kDateYearSuffix;
extern QOR_API const char* const kDateMonthSuffix;
extern QOR_API const char* const kDateDaySuffix;

/// Which parts of a date SetFieldValue writes.
enum DateAssembleType
{
    kDateYearMonthDay = 0,
    kDateYearMonth = 1,
    kDateMonthDay = 2,
    kDateYear = 3,
    kDateMonth = 4,
    kDateDay = 5,
};

/// -1 when the record set is not open, 0 when it is at BOF (an empty set, or one moved before its first
/// record); otherwise moves to the last record and returns its position + 1.
QOR_API long GetRecordCount(CDaoRecordset* rs);

/// Sets the date's local year, month and day from the three columns of name; its year becomes the local
/// year + 1911, or 0 when the local year is 0. The time fields are untouched; so is the whole date when
/// any of the three columns cannot be read.
QOR_API void GetFieldValue(CDaoRecordset* rs, const char* name, QorDate& d);
/// Writes the parts of the date chosen by how: the local year, the month, the day. With flag set the other
/// parts' columns are written as 0, so the record holds only the chosen parts; without it they keep their
/// stored values.
QOR_API void SetFieldValue(CDaoRecordset* rs, const char* name, QorDate& d, char flag = 0,
                           DateAssembleType how = kDateYearMonthDay);

QOR_API void SetFieldValue(CDaoRecordset* rs, const char* name, QorString& s);
QOR_API void GetFieldValue(CDaoRecordset* rs, const char* name, QorString& s);
QOR_API void SetFieldValue(CDaoRecordset* rs, const char* name, unsigned char v);
/// Values outside 0..255 are clamped to the nearer end.
QOR_API void GetFieldValue(CDaoRecordset* rs, const char* name, unsigned char& v);
QOR_API void SetFieldValue(CDaoRecordset* rs, const char* name, long v);
/// A real value is truncated towards zero.
QOR_API void GetFieldValue(CDaoRecordset* rs, const char* name, long& v);
QOR_API void SetFieldValue(CDaoRecordset* rs, const char* name, double v);
QOR_API void GetFieldValue(CDaoRecordset* rs, const char* name, double& v);

/// Reopens rs on every record of table and makes their number n (a negative n counts as 0): appends records
/// with every field at its default, or deletes records from the first one on. rs is left open on the table,
/// standing on its first record.
QOR_API void AlterRecordNum(CDaoRecordset* rs, const char* table, long n);
/// The same over the records whose field equals value: only they are counted and deleted, and each
/// appended record gets field = value (its other fields at their defaults), so it counts among them.
QOR_API void AlterRecordNum(CDaoRecordset* rs, const char* table, long n, const char* field, long value);

/// Opens a record set on sql and adds field of every record to box, in the records' order: integers (and
/// reals, truncated towards zero) as decimal text, text as it is, null as the empty text. Nothing is added
/// when sql fails or has no such field.
QOR_API void QueryFillCombo(CDaoDatabase* db, CComboBox* box, CString sql, const char* field);
