// ErrorMachineRows.cpp - hooks, filters, disk space, memory, limits of the system, ownership.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    // First, because the output of a hook precedes these messages and must not decide.
    {NEBSourceControlMessageEmptyErrorClass,
     {
         {"empty commit message.", "not committing merge; use '"},
     }},
    {NEBSourceControlLocalHookRefusedErrorClass,
     {
         "not committing merge; use '",
     },
     NEBSourceControlGenericError,
     {"The merge is done but not committed, because a hook of the repository refused the commit."}},
    {NEBSourceControlLocalHookRefusedErrorClass,
     {
         "ref updates aborted by hook",
     },
     NEBSourceControlGenericError,
     {"A hook of the repository refused to update a branch or tag."}},
    {NEBSourceControlOtherToolsErrorClass,
     {
         {": clean filter '", "' failed"},
         {": smudge filter ", " failed"},
     }},
    {NEBSourceControlDiskFullErrorClass,
     {
         "no space left on device",
         "disk quota exceeded",
         "out of diskspace",
         {"tar: ", ": wrote only "},  // the last block did not fit
     }},
    {NEBSourceControlOutOfMemoryErrorClass,
     {
         "cannot allocate memory",
         "out of memory",
         "data too large to fit into virtual memory",
         "you want to use way too much memory",
         "attempting to allocate ",
         "attempting to mmap ",
     }},
    {NEBSourceControlSystemLimitErrorClass,
     {
         "too many open files",
         "resource temporarily unavailable",
         "argument list too long",
         "file too large",
     }},
    {NEBSourceControlNameTooLongErrorClass,
     {
         "file name too long",
         "path too long",
     }},
    {NEBSourceControlOwnerNotTrustedErrorClass,
     {
         "detected dubious ownership in repository",
         "unsafe repository (",  // only 2.35.2 and the other fixes of that date
     }},
};

}  // namespace

ErrorCatalogueTable errorMachineRows() {
    return rows;
}

}  // namespace neb
