#include "adapters/windows/odbc.h"

#include "adapters/windows/windows_text.h"

namespace tarnex {

namespace {

constexpr SQLSMALLINT kLongestDriverName = 256;
constexpr SQLSMALLINT kLongestReason = 512;

template <typename Function>
bool Find(HMODULE library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

} // namespace

Odbc::Odbc() {
    const HMODULE library = LoadLibraryExW(L"odbc32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    loaded =
        library && Find(library, "SQLAllocHandle", alloc_handle) &&
        Find(library, "SQLFreeHandle", free_handle) &&
        Find(library, "SQLSetEnvAttr", set_env_attr) && Find(library, "SQLDriversW", drivers) &&
        Find(library, "SQLDriverConnectW", driver_connect) &&
        Find(library, "SQLDisconnect", disconnect) &&
        Find(library, "SQLExecDirectW", exec_direct) &&
        Find(library, "SQLNumResultCols", num_result_cols) &&
        Find(library, "SQLDescribeColW", describe_col) &&
        Find(library, "SQLBindParameter", bind_parameter) && Find(library, "SQLFetch", fetch) &&
        Find(library, "SQLGetData", get_data) && Find(library, "SQLGetDiagRecW", get_diag_rec);
}

const Odbc& TheOdbc() {
    static const Odbc odbc;
    return odbc;
}

OdbcHandle::OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
    const bool has_parent = parent != SQL_NULL_HANDLE || type == SQL_HANDLE_ENV;
    if (!TheOdbc().loaded || !has_parent ||
        !SQL_SUCCEEDED(TheOdbc().alloc_handle(type, parent, &handle_)))
        handle_ = SQL_NULL_HANDLE;
    else if (type == SQL_HANDLE_ENV)
        // A number that goes as a pointer. NOLINTNEXTLINE(performance-no-int-to-ptr)
        TheOdbc().set_env_attr(handle_, SQL_ATTR_ODBC_VERSION,
                               reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
}

OdbcHandle::~OdbcHandle() {
    if (handle_)
        TheOdbc().free_handle(type_, handle_);
}

std::string OdbcHandle::Why() const {
    wchar_t state[6]{};
    wchar_t text[kLongestReason]{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const bool told =
        handle_ && SQL_SUCCEEDED(TheOdbc().get_diag_rec(type_, handle_, 1, state, &native, text,
                                                        kLongestReason, &length));
    return told ? FromWide(text) : "no reason given";
}

bool HasOdbcDriver(const std::wstring& name) {
    const OdbcHandle environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    SQLUSMALLINT which = SQL_FETCH_FIRST;
    wchar_t found[kLongestDriverName]{};
    wchar_t attributes[2]{}; // which it cuts off
    SQLSMALLINT length = 0;
    while (environment &&
           SQL_SUCCEEDED(TheOdbc().drivers(environment.Get(), which, found, kLongestDriverName,
                                           &length, attributes, 2, &length))) {
        if (name == found)
            return true;
        which = SQL_FETCH_NEXT;
    }
    return false;
}

} // namespace tarnex
