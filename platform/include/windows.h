// The native build's form of the platform, as far as this product uses it. Each call behaves as the platform documents
// it; what is absent here does not compile.
#pragma once

#include <fileapi.h>
#include <guiddef.h>
#include <handleapi.h>
#include <heapapi.h>
#include <libloaderapi.h>
#include <synchapi.h>
#include <winbase.h>
#include <windef.h>
#include <winerror.h>
#include <winnls.h>
#include <winnt.h>
#include <winreg.h>
#include <winuser.h>
