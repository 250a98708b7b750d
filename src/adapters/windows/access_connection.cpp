#include "adapters/windows/access_connection.h"

#include "adapters/windows/windows_text.h"
#include "platform/text.h"

#include <algorithm>
#include <limits>

namespace tarnex {

namespace {

using namespace log_column;
constexpr SQLSMALLINT kLongestColumnName = 256;
// Longer texts are another kind of value for a driver.
constexpr std::size_t kLongestPlainText = 255;
constexpr const char* kOtherFile = ": name another file (setting \"log-database\")";
// A moment of a column for dates or for times: the other half is that of no time, and of no date.
constexpr std::size_t kDateLength = 10;
constexpr const wchar_t* kNoDate = L"1899-12-30 ";
constexpr const wchar_t* kNoTime = L" 00:00:00";
constexpr std::size_t kMomentLength = 19;

std::wstring Quoted(const std::wstring& name) {
    return L"[" + name + L"]";
}

// The whole text of a column, whatever it is; nothing for NULL.
std::optional<std::wstring> TextAt(const OdbcHandle& select, SQLUSMALLINT place) {
    std::wstring text;
    wchar_t part[256];
    for (;;) {
        SQLLEN length = 0;
        const SQLRETURN got =
            TheOdbc().get_data(select.Get(), place, SQL_C_WCHAR, part, sizeof part, &length);
        if (!SQL_SUCCEEDED(got) || length == SQL_NULL_DATA)
            return got == SQL_NO_DATA ? std::optional(text) : std::nullopt;
        // All that is left, or as much as there was room for.
        const std::size_t room = std::size(part) - 1;
        const std::size_t left =
            length == SQL_NO_TOTAL ? room : static_cast<std::size_t>(length) / sizeof(wchar_t);
        text.append(part, std::min(left, room));
        if (got == SQL_SUCCESS)
            return text;
    }
}

} // namespace

// A value on its way into a row: it must outlive the execution.
struct AccessConnection::Parameter {
    explicit Parameter(const LogValue& value) {
        if (const int* given = std::get_if<int>(&value)) {
            is_number = true;
            number = *given;
        } else if (const Text* given = std::get_if<Text>(&value)) {
            text.assign(given->begin(), given->end());
        }
    }
    bool is_number = false;
    SQLINTEGER number = 0;
    std::wstring text{};
    SQLLEN length = 0;
};

AccessConnection::AccessConnection(const std::string& path) : problem_(Open(path)) {}

AccessConnection::~AccessConnection() {
    if (connected_)
        TheOdbc().disconnect(connection_.Get());
}

std::string AccessConnection::Open(const std::string& path) {
    std::wstring words = L"Driver={" + std::wstring(kAccessDriver) + L"};DBQ=" + ToWide(path);
    if (!connection_ ||
        !SQL_SUCCEEDED(TheOdbc().driver_connect(connection_.Get(), nullptr, words.data(), SQL_NTS,
                                                nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)))
        return "cannot be opened (" + connection_.Why() + ")";
    connected_ = true;
    const OdbcHandle all(SQL_HANDLE_STMT, connection_.Get());
    std::wstring none = L"SELECT * FROM [Log] WHERE 1 = 0";
    SQLSMALLINT columns = 0;
    if (!all || !SQL_SUCCEEDED(TheOdbc().exec_direct(all.Get(), none.data(), SQL_NTS)) ||
        !SQL_SUCCEEDED(TheOdbc().num_result_cols(all.Get(), &columns)))
        return "has no table \"Log\" that can be read (" + all.Why() + ")" + kOtherFile;
    if (columns < static_cast<SQLSMALLINT>(kCount))
        return "has a table \"Log\" with " + std::to_string(columns) + " columns instead of " +
               std::to_string(kCount) + kOtherFile;
    Describe(all, kCount);
    return "";
}

void AccessConnection::Describe(const OdbcHandle& all, SQLSMALLINT columns) {
    for (SQLSMALLINT i = 1; i <= columns; ++i) {
        wchar_t name[kLongestColumnName]{};
        SQLSMALLINT type = 0;
        SQLSMALLINT length = 0;
        TheOdbc().describe_col(all.Get(), static_cast<SQLUSMALLINT>(i), name, kLongestColumnName,
                               &length, &type, nullptr, nullptr, nullptr);
        columns_.push_back({name, type == SQL_TYPE_TIMESTAMP});
    }
}

std::string AccessConnection::Append(const LogRow& row) {
    const OdbcHandle insert(SQL_HANDLE_STMT, connection_.Get());
    std::vector<Parameter> parameters(row.begin(), row.end());
    std::wstring names, places;
    SQLUSMALLINT place = 0;
    bool done = bool(insert);
    for (std::size_t i = 1; done && i < kCount; ++i) {
        if (std::holds_alternative<std::monostate>(row[i]))
            continue;
        const wchar_t* const separator = place == 0 ? L"" : L", ";
        names += separator + Quoted(columns_[i].name);
        places += std::wstring(separator) + L"?";
        done = Bind(insert, ++place, i, parameters[i]);
    }
    std::wstring sql = L"INSERT INTO [Log] (" + names + L") VALUES (" + places + L")";
    done = done && SQL_SUCCEEDED(TheOdbc().exec_direct(insert.Get(), sql.data(), SQL_NTS));
    return done ? "" : "takes no row (" + insert.Why() + ")";
}

bool AccessConnection::Bind(const OdbcHandle& insert, SQLUSMALLINT place, std::size_t column,
                            Parameter& parameter) const {
    if (parameter.is_number)
        return SQL_SUCCEEDED(TheOdbc().bind_parameter(insert.Get(), place, SQL_PARAM_INPUT,
                                                      SQL_C_SLONG, SQL_INTEGER, 0, 0,
                                                      &parameter.number, 0, &parameter.length));
    std::wstring& text = parameter.text;
    const bool is_moment = columns_[column].is_moment;
    if (is_moment)
        text = text.size() == kDateLength ? text + kNoTime : kNoDate + text;
    parameter.length = static_cast<SQLLEN>(text.size() * sizeof(wchar_t));
    const SQLSMALLINT type = is_moment                         ? SQL_TYPE_TIMESTAMP
                             : text.size() > kLongestPlainText ? SQL_WLONGVARCHAR
                                                               : SQL_WVARCHAR;
    return SQL_SUCCEEDED(
        TheOdbc().bind_parameter(insert.Get(), place, SQL_PARAM_INPUT, SQL_C_WCHAR, type,
                                 is_moment ? kMomentLength : std::max<std::size_t>(text.size(), 1),
                                 0, text.data(), parameter.length, &parameter.length));
}

std::optional<std::vector<StoredLogRow>> AccessConnection::Last(int count) {
    return Read(L" ORDER BY " + Quoted(columns_[kNumber].name) + L" DESC", count);
}

std::optional<std::vector<StoredLogRow>> AccessConnection::After(std::int64_t id) {
    const std::wstring number = Quoted(columns_[kNumber].name);
    return Read(L" WHERE " + number + L" > " + std::to_wstring(id) + L" ORDER BY " + number,
                std::numeric_limits<int>::max());
}

std::optional<std::vector<StoredLogRow>> AccessConnection::Read(std::wstring sql, int at_most) {
    sql = L"SELECT * FROM [Log]" + sql;
    const OdbcHandle select(SQL_HANDLE_STMT, connection_.Get());
    std::vector<StoredLogRow> rows;
    SQLRETURN got = SQL_ERROR;
    if (select && SQL_SUCCEEDED(TheOdbc().exec_direct(select.Get(), sql.data(), SQL_NTS))) {
        got = SQL_NO_DATA;
        while (std::ssize(rows) < at_most && SQL_SUCCEEDED(got = TheOdbc().fetch(select.Get())))
            rows.push_back(RowOf(select));
    }
    const bool read = SQL_SUCCEEDED(got) || got == SQL_NO_DATA;
    reading_problem_ = read ? "" : "cannot be read (" + select.Why() + ")";
    return read ? std::optional(std::move(rows)) : std::nullopt;
}

StoredLogRow AccessConnection::RowOf(const OdbcHandle& select) const {
    StoredLogRow row;
    for (std::size_t i = 0; i < kCount; ++i) {
        auto text = TextAt(select, static_cast<SQLUSMALLINT>(i + 1));
        if (!text)
            continue;
        if (columns_[i].is_moment && text->size() >= kMomentLength)
            *text = i == kTime ? text->substr(kDateLength + 1, 8) : text->substr(0, kDateLength);
        row.columns[i] = FromWide(*text);
    }
    row.id = LeadingNumber(FromUtf8(row.columns[kNumber].value_or("")));
    return row;
}

} // namespace tarnex
