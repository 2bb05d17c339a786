// Result codes: HRESULT, and the codes of the Win32 calls.
#pragma once

#include <windef.h>

constexpr bool SUCCEEDED(HRESULT hr)
{
    return hr >= 0;
}
constexpr bool FAILED(HRESULT hr)
{
    return hr < 0;
}
constexpr HRESULT MAKE_HRESULT(DWORD severity, DWORD facility, DWORD code)
{
    return HRESULT(severity << 31 | facility << 16 | code);
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT NOERROR = 0;
inline constexpr HRESULT E_NOTIMPL = HRESULT(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = HRESULT(0x80004002);
inline constexpr HRESULT E_POINTER = HRESULT(0x80004003);
inline constexpr HRESULT E_ABORT = HRESULT(0x80004004);
inline constexpr HRESULT E_FAIL = HRESULT(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = HRESULT(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = HRESULT(0x80070005);
inline constexpr HRESULT E_HANDLE = HRESULT(0x80070006);
inline constexpr HRESULT E_OUTOFMEMORY = HRESULT(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = HRESULT(0x80070057);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = HRESULT(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = HRESULT(0x80040111);
inline constexpr HRESULT STG_E_INVALIDFUNCTION = HRESULT(0x80030001);
inline constexpr HRESULT STG_E_FILENOTFOUND = HRESULT(0x80030002);
inline constexpr HRESULT STG_E_PATHNOTFOUND = HRESULT(0x80030003);
inline constexpr HRESULT STG_E_ACCESSDENIED = HRESULT(0x80030005);
inline constexpr HRESULT STG_E_INVALIDPOINTER = HRESULT(0x80030009);
inline constexpr HRESULT STG_E_MEDIUMFULL = HRESULT(0x80030070);

inline constexpr DWORD FACILITY_WIN32 = 7;
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG NO_ERROR = 0;
inline constexpr LONG ERROR_INVALID_FUNCTION = 1;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_PATH_NOT_FOUND = 3;
inline constexpr LONG ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr LONG ERROR_ACCESS_DENIED = 5;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr LONG ERROR_OUTOFMEMORY = 14;
inline constexpr LONG ERROR_NOT_SAME_DEVICE = 17;
inline constexpr LONG ERROR_NO_MORE_FILES = 18;
inline constexpr LONG ERROR_WRITE_PROTECT = 19;
inline constexpr LONG ERROR_WRITE_FAULT = 29;
inline constexpr LONG ERROR_READ_FAULT = 30;
inline constexpr LONG ERROR_SHARING_VIOLATION = 32;
inline constexpr LONG ERROR_HANDLE_EOF = 38;
inline constexpr LONG ERROR_NOT_SUPPORTED = 50;
inline constexpr LONG ERROR_FILE_EXISTS = 80;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_DISK_FULL = 112;
inline constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr LONG ERROR_INVALID_NAME = 123;
inline constexpr LONG ERROR_MOD_NOT_FOUND = 126;
inline constexpr LONG ERROR_NEGATIVE_SEEK = 131;
inline constexpr LONG ERROR_DIR_NOT_EMPTY = 145;
inline constexpr LONG ERROR_NOT_LOCKED = 158;
inline constexpr LONG ERROR_ALREADY_EXISTS = 183;
inline constexpr LONG ERROR_BAD_EXE_FORMAT = 193;
inline constexpr LONG ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;
inline constexpr LONG ERROR_DIRECTORY = 267;
inline constexpr LONG ERROR_INVALID_ADDRESS = 487;
inline constexpr LONG ERROR_INVALID_FLAGS = 1004;
inline constexpr LONG ERROR_BADKEY = 1010;
inline constexpr LONG ERROR_REGISTRY_CORRUPT = 1015;
inline constexpr LONG ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr LONG ERROR_KEY_DELETED = 1018;
inline constexpr LONG ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr LONG ERROR_DLL_INIT_FAILED = 1114;
inline constexpr LONG ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr LONG ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr LONG ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr LONG ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr LONG ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr LONG ERROR_INVALID_INDEX = 1413;
inline constexpr LONG ERROR_TIMEOUT = 1460;
inline constexpr LONG ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr LONG ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr LONG ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
inline constexpr LONG ERROR_RESOURCE_LANG_NOT_FOUND = 1815;
inline constexpr LONG ERROR_NOT_ENOUGH_QUOTA = 1816;

// A Win32 code as a failure; 0 stays S_OK, and what is an HRESULT already stays as it is.
constexpr HRESULT HRESULT_FROM_WIN32(DWORD code)
{
    return HRESULT(code) <= 0 ? HRESULT(code) : MAKE_HRESULT(1, FACILITY_WIN32, code & 0xFFFF);
}
