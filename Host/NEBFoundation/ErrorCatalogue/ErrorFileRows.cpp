// ErrorFileRows.cpp - where git names the files of a failure.
#include "NEBFoundation/ErrorCatalogue/ErrorFileRows.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {

namespace {

constexpr ErrorFileMention mentions[] = {
    {NEBSourceControlPathUnknownErrorClass, "", "pathspec '", "' did not match any file"},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path '", "", "' in "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path ", "", " in "},  // with a revision
    {NEBSourceControlPathUnknownErrorClass, "fatal: Cannot lstat '", "", "': "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: cannot stat path '", "", "': "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: path '", "", "' exists on disk, but not in "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: path '", "", "' does not exist in '"},
    {NEBSourceControlPathUnknownErrorClass, "fatal: not under version control, source=", "",
     ", destination="},
    {NEBSourceControlPathUnknownErrorClass, "fatal: bad source, source=", "", ", destination="},
    {NEBSourceControlPathOutsideErrorClass, "fatal: ", ": '", "' is outside repository"},
    {NEBSourceControlPathOutsideErrorClass, "fatal: pathspec '", "", "' is beyond a symbolic link"},
    {NEBSourceControlPathInSubmoduleErrorClass, "fatal: Pathspec '", "", "' is in submodule '"},
    {NEBSourceControlOtherToolsErrorClass, "fatal: ", "", ": clean filter '"},
    {NEBSourceControlOtherToolsErrorClass, "fatal: ", "", ": smudge filter "},
    {NEBSourceControlLocalChangesErrorClass, "error: Entry '", "", "' not uptodate."},
    {NEBSourceControlNeedsCleanTreeErrorClass, "", "", ": needs update"},
    {NEBSourceControlUntrackedInTheWayErrorClass, "error: Untracked working tree file '", "",
     "' would be "},
    {NEBSourceControlUntrackedInTheWayErrorClass, "", "", " already exists, no checkout"},
    {NEBSourceControlConflictUnresolvedErrorClass, "U\t", "", ""},
    {NEBSourceControlConflictUnresolvedErrorClass, "", "", ": needs merge"},
    {NEBSourceControlConflictUnresolvedErrorClass, "warning: path '", "", "' is unmerged"},
    {NEBSourceControlConflictUnresolvedErrorClass, "error: path '", "", "' is unmerged"},
    {NEBSourceControlConflictErrorClass, "CONFLICT (", "): Merge conflict in ", ""},
    {NEBSourceControlConflictErrorClass, "CONFLICT (modify/delete): ", "", " deleted in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/delete): ", " renamed to ", " in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", "", " renamed to "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", " renamed to ", " in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", " and to ", " in "},
    // the merge strategy "recursive", before 2.50
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): Rename \"", "", "\"->\""},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): Rename \"", "\"->\"", "\" in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/add): ", " Added ", " in "},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (file/directory): There is a directory with name ", "", " in "},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (directory/file): There is a directory with name ", "", " in "},
    // the merge strategy "ort"
    {NEBSourceControlConflictErrorClass, "CONFLICT (file/directory): directory in the way of ", "",
     " from "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (file location): ", "", " added in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (distinct types): ", "", " had different types"},
    {NEBSourceControlConflictErrorClass, "warning: Cannot merge binary files: ", "", " ("},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: destination path '", "",
     "' already exists"},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: destination ", ", destination=", ""},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: cannot move directory over file, ",
     ", destination=", ""},
    {NEBSourceControlDestinationMissingErrorClass, "fatal: destination ", ", destination=", ""},
    {NEBSourceControlSourceDirectoryEmptyErrorClass,
     "fatal: source directory is empty, source=", "", ", destination="},
    {NEBSourceControlPermissionDeniedErrorClass, "error: open(\"", "", "\"): "},
    {NEBSourceControlPermissionDeniedErrorClass, "error: unable to create file ", "", ": "},
    {NEBSourceControlPermissionDeniedErrorClass, "error: unable to unlink old '", "", "': "},
    {NEBSourceControlPermissionDeniedErrorClass, "warning: unable to unlink '", "", "': "},
    {NEBSourceControlPermissionDeniedErrorClass, "warning: could not open directory '", "", "': "},
    {NEBSourceControlObjectsDamagedErrorClass, "error: unable to read sha1 file of ", "", " ("},
    {NEBSourceControlConflictUnresolvedErrorClass, "fatal: conflicted, source=", "",
     ", destination="},
    {NEBSourceControlPathInvalidErrorClass,
     "fatal: can not move directory into itself, source=", "", ", destination="},
    {NEBSourceControlPathInvalidErrorClass, "error: invalid path '", "", "'"},
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: CRLF would be replaced by LF in ", "", ""},
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: LF would be replaced by CRLF in ", "", ""},
    {NEBSourceControlEncodingFailedErrorClass, "", "failed to encode '", "' from "},
    {NEBSourceControlEncodingFailedErrorClass, "", "BOM is required in '", "' if encoded as "},
    {NEBSourceControlEncodingFailedErrorClass, "", "BOM is prohibited in '", "' if encoded as "},
    {NEBSourceControlEmbeddedRepositoryErrorClass, "error: '", "",
     "' does not have a commit checked out"},
    {NEBSourceControlIndexLockedErrorClass, "", "Unable to create '", "': File exists"},
};

constexpr ErrorFileList lists[] = {
    {NEBSourceControlLocalChangesErrorClass,
     "local changes to the following files would be overwritten by", "\t"},
    {NEBSourceControlLocalChangesErrorClass,
     "cannot continue with staged changes in the following files", ""},
    {NEBSourceControlUntrackedInTheWayErrorClass, "untracked working tree files would be ", "\t"},
    {NEBSourceControlPathIgnoredErrorClass, "paths are ignored by one of your .gitignore files",
     ""},
    // the second line of a heading
    {NEBSourceControlPathSparseErrorClass, "updated in the index:", ""},
    {NEBSourceControlLocalChangesErrorClass, "local modifications:", "    "},
    {NEBSourceControlLocalChangesErrorClass, "changes staged in the index:", "    "},
    {NEBSourceControlLocalChangesErrorClass,
     "staged content different from both the file and the head:", "    "},
};

}  // namespace

std::span<const ErrorFileMention> errorFileMentions() {
    return mentions;
}

std::span<const ErrorFileList> errorFileLists() {
    return lists;
}

}  // namespace neb
