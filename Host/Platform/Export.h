// Export.h - the macro that makes a symbol of the host library visible.
//
// Everything is compiled with hidden visibility. Plug-ins and hosts can link only against classes
// and functions with this macro.
#pragma once

#define NEB_EXPORT __attribute__((visibility("default")))
