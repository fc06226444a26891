// Export.h - the mark of what the host library shows to plug-ins and hosts.
//
// Everything is compiled with hidden visibility; a class or function without this mark cannot be
// linked against from outside the library.
#pragma once

#define NEB_EXPORT __attribute__((visibility("default")))
