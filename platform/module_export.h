// Marks what a module shows to its loader; on the platform a list beside the module does.
#pragma once

#define QX_EXPORT __attribute__((visibility("default")))
