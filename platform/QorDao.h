#pragma once

#include "core/QorExport.h"

#include "core/QorString.h"

#include <cstdint>
#include <string>
#include <vector>

// The desktop-database classes the record helpers are written against, kept small: a database file,
// a record set over a query, and a combo box's list of texts. SQLite3 is the engine; its header stays
// inside platform/QorDao.cpp.

struct sqlite3;
struct sqlite3_stmt;

/// The text type of the record helpers' signatures: the library's own byte string, so Big5 passes unchanged.
typedef QorString CString;

/// A database file. SQL texts are run as given: quote names and bind values when building them.
class QOR_API CDaoDatabase
{
public:
    CDaoDatabase() = default;
    ~CDaoDatabase();
    CDaoDatabase(const CDaoDatabase&) = delete;
    CDaoDatabase& operator=(const CDaoDatabase&) = delete;

    /// Closes a database still open, then opens path, creating an empty database when the file is missing.
    /// False (and closed) on failure.
    char Open(const char* path);
    char IsOpen() const { return m_db != nullptr; }
    /// Runs sql, one or more statements, discarding any rows. False when closed or when a statement fails;
    /// the statements before it stay done.
    char Execute(const char* sql);
    /// Closes the file. Record sets opened on it keep their pointer but can no longer read or write.
    void Close();
    /// The engine's connection, null when closed.
    sqlite3* GetHandle() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

/// A set of records from one query, walked one current record at a time.
///
/// A query of the form "SELECT * FROM table", optionally followed by WHERE, ORDER BY or LIMIT clauses, gives an
/// updatable set: it keeps the records' row ids, reads the current record afresh at each move, and writes
/// through AddNew, Edit, Update and Delete. Any other query gives a read-only snapshot of its rows.
/// Positions run from 0; before the first record IsBOF is true, after the last IsEOF, and both on an empty set.
/// \note The database must outlive the record set. Views and tables without row ids are read-only.
class QOR_API CDaoRecordset
{
public:
    enum FieldType : int
    {
        kFieldMissing = -1, ///< no such field, or no current record
        kFieldNull = 0,
        kFieldInteger = 1,
        kFieldFloat = 2,
        kFieldText = 3,
        kFieldBlob = 4,
    };
    enum EditMode : int
    {
        kEditNone = 0,
        kEditInProgress = 1,
        kEditAdd = 2,
    };

    explicit CDaoRecordset(CDaoDatabase* database = nullptr);
    ~CDaoRecordset() = default;
    CDaoRecordset(const CDaoRecordset&) = delete;
    CDaoRecordset& operator=(const CDaoRecordset&) = delete;

    /// Closes a set still open, then runs sql (a single statement) over the database and stands on the first
    /// record. Each '?' in sql takes the next of the parameters. False (and closed) when the database is not
    /// open or sql fails.
    char Open(const char* sql);
    char Open(const char* sql, long parameter);
    char Open(const char* sql, const std::vector<long>& parameters);
    char IsOpen() const { return m_open; }
    char CanUpdate() const { return m_open && m_updatable; }
    void Close();
    CDaoDatabase* GetDatabase() const { return m_database; }

    char IsBOF() const;
    char IsEOF() const;
    /// Each move drops an unfinished AddNew or Edit and returns whether it stands on a record. A move past
    /// either end leaves the set at BOF or EOF; moves on an empty set do nothing.
    char MoveFirst();
    char MoveLast();
    char MoveNext();
    char MovePrev();
    /// The current record's position from 0, or -1 when there is no current record.
    long GetAbsolutePosition() const;
    /// The number of records in the set.
    long GetCount() const;

    /// Starts a new record whose fields are all null until set. Updatable sets only.
    char AddNew();
    /// Starts changing the current record. Updatable sets only.
    char Edit();
    /// Writes the fields set since AddNew or Edit. A new record joins the end of the set; the current record
    /// stays the one before AddNew. False (and still editing) when the engine refuses the change.
    char Update();
    void CancelUpdate();
    int GetEditMode() const { return m_editMode; }
    /// Deletes the current record. Until the next move there is no current record; MoveNext then goes to
    /// the record that followed it.
    char Delete();

    short GetFieldCount() const { return static_cast<short>(m_fieldNames.size()); }
    /// The name of field index, empty when out of range.
    QorString GetFieldName(short index) const;
    /// Field names compare without regard to ASCII case, as SQL names do.
    char HasField(const char* name) const;
    /// The stored type of the field of the current record (or of the value set during AddNew or Edit).
    int GetFieldType(const char* name) const;
    /// Reads a field of the current record, during AddNew or Edit the value set so far. Values convert as the
    /// engine converts them: null reads as 0 or the empty text, a real as an integer truncates towards zero.
    /// False, with value untouched, for an unknown field or no current record.
    char GetFieldValue(const char* name, long& value) const;
    char GetFieldValue(const char* name, double& value) const;
    char GetFieldValue(const char* name, QorString& value) const;
    /// Sets a field for the next Update; only between AddNew or Edit and Update. A null text sets null.
    char SetFieldValue(const char* name, long value);
    char SetFieldValue(const char* name, double value);
    char SetFieldValue(const char* name, const char* text);
    char SetFieldValueNull(const char* name);

private:
    struct Value
    {
        int type = kFieldNull;
        std::int64_t integer = 0;
        double real = 0.0;
        std::string bytes;
    };
    struct Pending
    {
        bool set = false;
        Value value;
    };
    using Row = std::vector<Value>;

    static void ReadValue(sqlite3_stmt* stmt, int column, Value& value);
    static bool BindValue(sqlite3_stmt* stmt, int index, const Value& value);
    void ReadNames(sqlite3_stmt* stmt, int first);
    bool OpenUpdatable(const std::string& sql, const std::string& table, std::size_t star,
                       const std::vector<long>& parameters);
    long FieldIndex(const char* name) const;
    const Value* FieldAt(const char* name) const;
    char SetPending(const char* name, const Value& value);
    bool HasCurrent() const;
    char StartEdit(int mode);
    char Settle(long position);
    bool LoadCurrent();
    sqlite3* Handle() const;

    CDaoDatabase* m_database = nullptr;
    bool m_open = false;
    bool m_updatable = false;
    std::string m_table;
    std::string m_rowIdName;
    std::vector<std::string> m_fieldNames;
    std::vector<std::int64_t> m_rowIds;
    std::vector<Row> m_rows;
    Row m_current;
    std::vector<Pending> m_pending;
    long m_position = 0;
    bool m_deleted = false;
    int m_editMode = kEditNone;
};

/// A combo box's list: texts kept in the order added.
class QOR_API CComboBox
{
public:
    /// Appends text (null counts as empty); returns its index.
    int AddString(const char* text);
    int GetCount() const { return static_cast<int>(m_items.size()); }
    /// Copies item index into text and returns its length, or returns -1 (text untouched) when out of range.
    int GetLBText(int index, CString& text) const;
    /// The length of item index, or -1 when out of range.
    int GetLBTextLen(int index) const;
    void ResetContent() { m_items.clear(); }

private:
    std::vector<QorString> m_items;
};
