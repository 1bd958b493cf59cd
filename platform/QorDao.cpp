#include "QorDao.h"

#include <sqlite3.h>

#include <cstring>
#include <initializer_list>
#include <new>
#include <utility>

namespace
{
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

bool IsNameChar(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_' || u == '$' ||
           u >= 0x80;
}

char FoldCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualNoCase(const std::string& a, const char* b)
{
    std::size_t i = 0;
    for (; i < a.size() && b[i] != 0; ++i)
    {
        if (FoldCase(a[i]) != FoldCase(b[i]))
            return false;
    }
    return i == a.size() && b[i] == 0;
}

std::string QuoteName(const std::string& name)
{
    std::string out = "\"";
    for (char c : name)
    {
        if (c == '"')
            out += '"';
        out += c;
    }
    return out + "\"";
}

// One prepared statement, finalized on destruction. Text after the first statement other than blanks and
// semicolons makes it invalid, so a query can never carry a second statement along.
class Statement
{
public:
    Statement(sqlite3* db, const char* sql)
    {
        const char* tail = nullptr;
        if (!db || !sql || sqlite3_prepare_v2(db, sql, -1, &m_stmt, &tail) != SQLITE_OK)
            return;
        while (tail && (IsSpace(*tail) || *tail == ';'))
            ++tail;
        if (tail && *tail != 0)
        {
            sqlite3_finalize(m_stmt);
            m_stmt = nullptr;
        }
    }
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    sqlite3_stmt* Get() const { return m_stmt; }
    bool IsValid() const { return m_stmt != nullptr; }

    // Binds the parameters in order; their count must match the statement's.
    bool Bind(const std::vector<long>& parameters)
    {
        if (sqlite3_bind_parameter_count(m_stmt) != static_cast<int>(parameters.size()))
            return false;
        for (std::size_t i = 0; i < parameters.size(); ++i)
        {
            if (sqlite3_bind_int64(m_stmt, static_cast<int>(i + 1), parameters[i]) != SQLITE_OK)
                return false;
        }
        return true;
    }

private:
    sqlite3_stmt* m_stmt = nullptr;
};

std::size_t SkipSpace(const std::string& s, std::size_t i)
{
    while (i < s.size() && IsSpace(s[i]))
        ++i;
    return i;
}

// Matches a keyword at i (any case) that is not the start of a longer name; returns the index after it.
bool MatchKeyword(const std::string& s, std::size_t& i, const char* keyword)
{
    const std::size_t n = std::strlen(keyword);
    if (s.size() - i < n || !EqualNoCase(s.substr(i, n), keyword) || (i + n < s.size() && IsNameChar(s[i + n])))
        return false;
    i += n;
    return true;
}

// One part of a table name: a quoted name ("...", [...], `...`) or a bare one.
bool MatchNamePart(const std::string& s, std::size_t& i)
{
    if (i >= s.size())
        return false;
    const char open = s[i];
    if (open == '"' || open == '`' || open == '[')
    {
        const char close = open == '[' ? ']' : open;
        for (std::size_t j = i + 1; j < s.size(); ++j)
        {
            if (s[j] != close)
                continue;
            if (close != ']' && j + 1 < s.size() && s[j + 1] == close)
            {
                ++j;
                continue;
            }
            i = j + 1;
            return true;
        }
        return false;
    }
    const std::size_t start = i;
    while (i < s.size() && IsNameChar(s[i]))
        ++i;
    return i > start;
}

// Recognises "SELECT * FROM table" followed by nothing, a semicolon, or a WHERE, ORDER BY or LIMIT clause.
// Gives the table as written and the offset of the '*'.
bool ParseTableSelect(const std::string& sql, std::string& table, std::size_t& star)
{
    std::size_t i = SkipSpace(sql, 0);
    if (!MatchKeyword(sql, i, "select"))
        return false;
    i = SkipSpace(sql, i);
    if (i >= sql.size() || sql[i] != '*')
        return false;
    star = i;
    i = SkipSpace(sql, i + 1);
    if (!MatchKeyword(sql, i, "from"))
        return false;
    i = SkipSpace(sql, i);
    const std::size_t tableStart = i;
    if (!MatchNamePart(sql, i))
        return false;
    if (i < sql.size() && sql[i] == '.' && !MatchNamePart(sql, ++i))
        return false;
    table = sql.substr(tableStart, i - tableStart);
    i = SkipSpace(sql, i);
    if (i >= sql.size() || sql[i] == ';')
        return true;
    return MatchKeyword(sql, i, "where") || MatchKeyword(sql, i, "order") || MatchKeyword(sql, i, "limit");
}

int FieldTypeOf(int engineType)
{
    switch (engineType)
    {
    case SQLITE_INTEGER:
        return CDaoRecordset::kFieldInteger;
    case SQLITE_FLOAT:
        return CDaoRecordset::kFieldFloat;
    case SQLITE_TEXT:
        return CDaoRecordset::kFieldText;
    case SQLITE_BLOB:
        return CDaoRecordset::kFieldBlob;
    default:
        return CDaoRecordset::kFieldNull;
    }
}
} // namespace

CDaoDatabase::~CDaoDatabase()
{
    Close();
}

char CDaoDatabase::Open(const char* path)
{
    Close();
    if (!path)
        return 0;
    if (sqlite3_open_v2(path, &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
    {
        Close();
        return 0;
    }
    return 1;
}

char CDaoDatabase::Execute(const char* sql)
{
    return m_db && sql && sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

void CDaoDatabase::Close()
{
    if (m_db)
        sqlite3_close_v2(m_db);
    m_db = nullptr;
}

CDaoRecordset::CDaoRecordset(CDaoDatabase* database) : m_database(database) {}

// The type is read before any conversion, and the text last, since a conversion may replace the text form.
void CDaoRecordset::ReadValue(sqlite3_stmt* stmt, int column, Value& value)
{
    value.type = FieldTypeOf(sqlite3_column_type(stmt, column));
    value.integer = sqlite3_column_int64(stmt, column);
    value.real = sqlite3_column_double(stmt, column);
    const void* data = value.type == kFieldBlob ? sqlite3_column_blob(stmt, column)
                                                : static_cast<const void*>(sqlite3_column_text(stmt, column));
    const int n = sqlite3_column_bytes(stmt, column);
    if (data)
        value.bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(n));
    else
        value.bytes.clear();
}

bool CDaoRecordset::BindValue(sqlite3_stmt* stmt, int index, const Value& value)
{
    switch (value.type)
    {
    case kFieldInteger:
        return sqlite3_bind_int64(stmt, index, value.integer) == SQLITE_OK;
    case kFieldFloat:
        return sqlite3_bind_double(stmt, index, value.real) == SQLITE_OK;
    case kFieldText:
        return sqlite3_bind_text64(stmt, index, value.bytes.data(), value.bytes.size(), SQLITE_TRANSIENT,
                                   SQLITE_UTF8) == SQLITE_OK;
    case kFieldBlob:
        return sqlite3_bind_blob64(stmt, index, value.bytes.data(), value.bytes.size(), SQLITE_TRANSIENT) == SQLITE_OK;
    default:
        return sqlite3_bind_null(stmt, index) == SQLITE_OK;
    }
}

void CDaoRecordset::ReadNames(sqlite3_stmt* stmt, int first)
{
    const int columns = sqlite3_column_count(stmt);
    for (int c = first; c < columns; ++c)
    {
        const char* name = sqlite3_column_name(stmt, c);
        m_fieldNames.emplace_back(name ? name : "");
    }
}

sqlite3* CDaoRecordset::Handle() const
{
    return m_database ? m_database->GetHandle() : nullptr;
}

char CDaoRecordset::Open(const char* sql)
{
    return Open(sql, std::vector<long>());
}

char CDaoRecordset::Open(const char* sql, long parameter)
{
    try
    {
        return Open(sql, std::vector<long>{parameter});
    }
    catch (const std::bad_alloc&)
    {
        Close();
        return 0;
    }
}

char CDaoRecordset::Open(const char* sql, const std::vector<long>& parameters)
{
    Close();
    sqlite3* db = Handle();
    if (!db || !sql)
        return 0;
    try
    {
        const std::string text = sql;
        std::string table;
        std::size_t star = 0;
        if (ParseTableSelect(text, table, star) && OpenUpdatable(text, table, star, parameters))
        {
            m_updatable = true;
            m_open = true;
            Settle(0);
            return 1;
        }

        Statement stmt(db, sql);
        if (!stmt.IsValid() || !sqlite3_stmt_readonly(stmt.Get()) || sqlite3_column_count(stmt.Get()) == 0 ||
            !stmt.Bind(parameters))
            return 0;
        ReadNames(stmt.Get(), 0);
        const int columns = sqlite3_column_count(stmt.Get());
        int rc;
        while ((rc = sqlite3_step(stmt.Get())) == SQLITE_ROW)
        {
            Row row(static_cast<std::size_t>(columns));
            for (int c = 0; c < columns; ++c)
                ReadValue(stmt.Get(), c, row[static_cast<std::size_t>(c)]);
            m_rows.push_back(std::move(row));
        }
        if (rc != SQLITE_DONE)
        {
            Close();
            return 0;
        }
        m_open = true;
        Settle(0);
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        Close();
        return 0;
    }
}

// Reads the row ids of a whole-table query, under the first of the engine's names for the row id that no
// column of the table shadows. A view, a table without row ids or a compound query fails here and is read
// as a snapshot instead.
bool CDaoRecordset::OpenUpdatable(const std::string& sql, const std::string& table, std::size_t star,
                                  const std::vector<long>& parameters)
{
    for (const char* rowIdName : {"rowid", "_rowid_", "oid"})
    {
        const std::string withRowId = sql.substr(0, star) + rowIdName + ", *" + sql.substr(star + 1);
        Statement stmt(Handle(), withRowId.c_str());
        if (!stmt.IsValid() || !stmt.Bind(parameters))
            break;
        m_fieldNames.clear();
        ReadNames(stmt.Get(), 1);
        bool shadowed = false;
        for (const std::string& name : m_fieldNames)
            shadowed = shadowed || EqualNoCase(name, rowIdName);
        if (shadowed)
            continue;
        int rc;
        while ((rc = sqlite3_step(stmt.Get())) == SQLITE_ROW)
            m_rowIds.push_back(sqlite3_column_int64(stmt.Get(), 0));
        if (rc != SQLITE_DONE)
            break;
        m_table = table;
        m_rowIdName = rowIdName;
        return true;
    }
    m_fieldNames.clear();
    m_rowIds.clear();
    return false;
}

void CDaoRecordset::Close()
{
    m_open = false;
    m_updatable = false;
    m_table.clear();
    m_rowIdName.clear();
    m_fieldNames.clear();
    m_rowIds.clear();
    m_rows.clear();
    m_current.clear();
    m_pending.clear();
    m_position = 0;
    m_deleted = false;
    m_editMode = kEditNone;
}

long CDaoRecordset::GetCount() const
{
    if (!m_open)
        return 0;
    return static_cast<long>(m_updatable ? m_rowIds.size() : m_rows.size());
}

char CDaoRecordset::IsBOF() const
{
    return GetCount() == 0 || m_position < 0;
}

char CDaoRecordset::IsEOF() const
{
    return GetCount() == 0 || m_position >= GetCount();
}

bool CDaoRecordset::HasCurrent() const
{
    return m_open && !m_deleted && m_position >= 0 && m_position < GetCount();
}

long CDaoRecordset::GetAbsolutePosition() const
{
    return HasCurrent() ? m_position : -1;
}

// Stands on position (-1 is BOF, the count is EOF), dropping any unfinished edit.
char CDaoRecordset::Settle(long position)
{
    CancelUpdate();
    m_deleted = false;
    m_position = position;
    m_current.clear();
    if (!HasCurrent())
        return 0;
    return m_updatable ? LoadCurrent() : 1;
}

// A record deleted behind the set's back leaves m_current empty: its fields then cannot be read or edited.
bool CDaoRecordset::LoadCurrent()
{
    m_current.clear();
    try
    {
        const std::string sql = "SELECT * FROM " + m_table + " WHERE " + m_rowIdName + "=?";
        Statement stmt(Handle(), sql.c_str());
        if (!stmt.IsValid() ||
            sqlite3_bind_int64(stmt.Get(), 1, m_rowIds[static_cast<std::size_t>(m_position)]) != SQLITE_OK ||
            sqlite3_step(stmt.Get()) != SQLITE_ROW)
            return false;
        const int columns = sqlite3_column_count(stmt.Get());
        Row row(static_cast<std::size_t>(columns));
        for (int c = 0; c < columns; ++c)
            ReadValue(stmt.Get(), c, row[static_cast<std::size_t>(c)]);
        m_current = std::move(row);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        m_current.clear();
        return false;
    }
}

char CDaoRecordset::MoveFirst()
{
    return GetCount() > 0 ? Settle(0) : 0;
}

char CDaoRecordset::MoveLast()
{
    return GetCount() > 0 ? Settle(GetCount() - 1) : 0;
}

char CDaoRecordset::MoveNext()
{
    if (GetCount() == 0 || (!m_deleted && m_position >= GetCount()))
        return 0;
    // After a delete the following record has moved up into the deleted one's position.
    return Settle(m_deleted ? m_position : m_position + 1);
}

char CDaoRecordset::MovePrev()
{
    if (GetCount() == 0 || m_position < 0)
        return 0;
    return Settle(m_position - 1);
}

char CDaoRecordset::AddNew()
{
    return CanUpdate() ? StartEdit(kEditAdd) : 0;
}

char CDaoRecordset::Edit()
{
    return CanUpdate() && HasCurrent() && !m_current.empty() ? StartEdit(kEditInProgress) : 0;
}

char CDaoRecordset::StartEdit(int mode)
{
    CancelUpdate();
    try
    {
        m_pending.assign(m_fieldNames.size(), Pending());
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
    m_editMode = mode;
    return 1;
}

void CDaoRecordset::CancelUpdate()
{
    m_editMode = kEditNone;
    m_pending.clear();
}

char CDaoRecordset::Update()
{
    sqlite3* db = Handle();
    if (m_editMode == kEditNone || !db)
        return 0;
    try
    {
        std::vector<std::size_t> changed;
        for (std::size_t i = 0; i < m_pending.size(); ++i)
        {
            if (m_pending[i].set)
                changed.push_back(i);
        }
        if (m_editMode == kEditInProgress && changed.empty())
        {
            CancelUpdate();
            return 1;
        }

        std::string sql;
        if (m_editMode == kEditAdd && changed.empty())
        {
            sql = "INSERT INTO " + m_table + " DEFAULT VALUES";
        }
        else if (m_editMode == kEditAdd)
        {
            std::string names, marks;
            for (std::size_t i : changed)
            {
                names += (names.empty() ? "" : ", ") + QuoteName(m_fieldNames[i]);
                marks += marks.empty() ? "?" : ", ?";
            }
            sql = "INSERT INTO " + m_table + " (" + names + ") VALUES (" + marks + ")";
        }
        else
        {
            std::string sets;
            for (std::size_t i : changed)
                sets += (sets.empty() ? "" : ", ") + QuoteName(m_fieldNames[i]) + "=?";
            sql = "UPDATE " + m_table + " SET " + sets + " WHERE " + m_rowIdName + "=?";
        }

        Statement stmt(db, sql.c_str());
        if (!stmt.IsValid())
            return 0;
        int index = 1;
        for (std::size_t i : changed)
        {
            const Value& v = m_pending[i].value;
            if (!BindValue(stmt.Get(), index++, v))
                return 0;
        }
        if (m_editMode == kEditInProgress &&
            sqlite3_bind_int64(stmt.Get(), index, m_rowIds[static_cast<std::size_t>(m_position)]) != SQLITE_OK)
            return 0;
        if (sqlite3_step(stmt.Get()) != SQLITE_DONE)
            return 0;

        if (m_editMode == kEditAdd)
        {
            const long count = GetCount();
            m_rowIds.push_back(sqlite3_last_insert_rowid(db));
            // At EOF the set stays at EOF rather than standing on the new record.
            if (m_position >= count)
                m_position = count + 1;
            CancelUpdate();
        }
        else
        {
            CancelUpdate();
            LoadCurrent();
        }
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

char CDaoRecordset::Delete()
{
    if (!CanUpdate() || !HasCurrent())
        return 0;
    CancelUpdate();
    try
    {
        const std::string sql = "DELETE FROM " + m_table + " WHERE " + m_rowIdName + "=?";
        Statement stmt(Handle(), sql.c_str());
        if (!stmt.IsValid() ||
            sqlite3_bind_int64(stmt.Get(), 1, m_rowIds[static_cast<std::size_t>(m_position)]) != SQLITE_OK ||
            sqlite3_step(stmt.Get()) != SQLITE_DONE)
            return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
    m_rowIds.erase(m_rowIds.begin() + m_position);
    m_current.clear();
    m_deleted = true;
    return 1;
}

QorString CDaoRecordset::GetFieldName(short index) const
{
    if (index < 0 || index >= GetFieldCount())
        return QorString();
    return QorString(m_fieldNames[static_cast<std::size_t>(index)].c_str());
}

// An exact match first, then one that differs only in ASCII case.
long CDaoRecordset::FieldIndex(const char* name) const
{
    if (!m_open || !name)
        return -1;
    for (std::size_t i = 0; i < m_fieldNames.size(); ++i)
    {
        if (m_fieldNames[i] == name)
            return static_cast<long>(i);
    }
    for (std::size_t i = 0; i < m_fieldNames.size(); ++i)
    {
        if (EqualNoCase(m_fieldNames[i], name))
            return static_cast<long>(i);
    }
    return -1;
}

char CDaoRecordset::HasField(const char* name) const
{
    return FieldIndex(name) >= 0;
}

const CDaoRecordset::Value* CDaoRecordset::FieldAt(const char* name) const
{
    static const Value kNull;
    const long index = FieldIndex(name);
    if (index < 0)
        return nullptr;
    const auto i = static_cast<std::size_t>(index);
    if (m_editMode != kEditNone && m_pending[i].set)
        return &m_pending[i].value;
    if (m_editMode == kEditAdd)
        return &kNull;
    if (!HasCurrent())
        return nullptr;
    const Row& row = m_updatable ? m_current : m_rows[static_cast<std::size_t>(m_position)];
    return i < row.size() ? &row[i] : nullptr;
}

int CDaoRecordset::GetFieldType(const char* name) const
{
    const Value* v = FieldAt(name);
    return v ? v->type : kFieldMissing;
}

char CDaoRecordset::GetFieldValue(const char* name, long& value) const
{
    const Value* v = FieldAt(name);
    if (!v)
        return 0;
    value = static_cast<long>(v->integer);
    return 1;
}

char CDaoRecordset::GetFieldValue(const char* name, double& value) const
{
    const Value* v = FieldAt(name);
    if (!v)
        return 0;
    value = v->real;
    return 1;
}

char CDaoRecordset::GetFieldValue(const char* name, QorString& value) const
{
    const Value* v = FieldAt(name);
    if (!v)
        return 0;
    value = QorString(v->bytes.data(), static_cast<int>(v->bytes.size()));
    return 1;
}

// Keeps value for the next Update, with the integer, real and text forms the engine gives it, so that
// reading the field back before Update converts as reading it from the table would.
char CDaoRecordset::SetPending(const char* name, const Value& value)
{
    const long index = FieldIndex(name);
    if (m_editMode == kEditNone || index < 0)
        return 0;
    try
    {
        Pending& pending = m_pending[static_cast<std::size_t>(index)];
        pending.set = true;
        pending.value = value;
        Statement stmt(Handle(), "SELECT ?");
        if (stmt.IsValid() && BindValue(stmt.Get(), 1, value) && sqlite3_step(stmt.Get()) == SQLITE_ROW)
            ReadValue(stmt.Get(), 0, pending.value);
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

char CDaoRecordset::SetFieldValue(const char* name, long value)
{
    Value v;
    v.type = kFieldInteger;
    v.integer = value;
    return SetPending(name, v);
}

char CDaoRecordset::SetFieldValue(const char* name, double value)
{
    Value v;
    v.type = kFieldFloat;
    v.real = value;
    return SetPending(name, v);
}

char CDaoRecordset::SetFieldValue(const char* name, const char* text)
{
    Value v;
    if (text)
    {
        v.type = kFieldText;
        v.bytes = text;
    }
    return SetPending(name, v);
}

char CDaoRecordset::SetFieldValueNull(const char* name)
{
    return SetPending(name, Value());
}

int CComboBox::AddString(const char* text)
{
    try
    {
        m_items.emplace_back(text);
    }
    catch (const std::bad_alloc&)
    {
        return -1;
    }
    return static_cast<int>(m_items.size()) - 1;
}

int CComboBox::GetLBText(int index, CString& text) const
{
    if (index < 0 || index >= GetCount())
        return -1;
    text = m_items[static_cast<std::size_t>(index)];
    return static_cast<int>(text.GetLength());
}

int CComboBox::GetLBTextLen(int index) const
{
    if (index < 0 || index >= GetCount())
        return -1;
    return static_cast<int>(m_items[static_cast<std::size_t>(index)].GetLength());
}
