// Media streaming, as far as filters and the graph around them go.
#pragma once

#include <windows.h>

#include <control.h>
#include <evcode.h>
#include <strmif.h>
#include <uuids.h>
#include <vfwmsgs.h>
