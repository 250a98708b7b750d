#pragma once

#include "adapters/windows/windows_headers.h"

#include <string>

#include <sql.h>
#include <sqlext.h>

namespace tarnex {

// ODBC, loaded when an Access database is first named: most machines never need it. Where it is not
// loaded the functions are null and every OdbcHandle is none.
struct Odbc {
    Odbc();
    bool loaded = false;
    decltype(&SQLAllocHandle) alloc_handle = nullptr;
    decltype(&SQLFreeHandle) free_handle = nullptr;
    decltype(&SQLSetEnvAttr) set_env_attr = nullptr;
    decltype(&SQLDriversW) drivers = nullptr;
    decltype(&SQLDriverConnectW) driver_connect = nullptr;
    decltype(&SQLDisconnect) disconnect = nullptr;
    decltype(&SQLExecDirectW) exec_direct = nullptr;
    decltype(&SQLNumResultCols) num_result_cols = nullptr;
    decltype(&SQLDescribeColW) describe_col = nullptr;
    decltype(&SQLBindParameter) bind_parameter = nullptr;
    decltype(&SQLFetch) fetch = nullptr;
    decltype(&SQLGetData) get_data = nullptr;
    decltype(&SQLGetDiagRecW) get_diag_rec = nullptr;
};
const Odbc& TheOdbc();

// One of its objects, which goes with this; none where it could not be made.
class OdbcHandle {
  public:
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent);
    ~OdbcHandle();
    OdbcHandle(const OdbcHandle&) = delete;
    OdbcHandle& operator=(const OdbcHandle&) = delete;

    SQLHANDLE Get() const { return handle_; }
    explicit operator bool() const { return handle_ != SQL_NULL_HANDLE; }
    // Why the last call with it failed, in the driver's words.
    std::string Why() const;

  private:
    SQLSMALLINT type_;
    SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// Whether a driver of that name is installed.
bool HasOdbcDriver(const std::wstring& name);

} // namespace tarnex
