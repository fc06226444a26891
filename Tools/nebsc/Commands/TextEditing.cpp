#include "Commands/TextEditing.h"

#include <fstream>
#include <iterator>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Session/Editor.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::string pathOfGitFile(const GitQueries& git, const std::string& name) {
    const std::string path =
        git.outputOf({"rev-parse", "--git-path", name}).value_or(".git/" + name);
    return path.starts_with('/') ? path
                                 : pathByAppendingComponent(git.workingCopy().location, path);
}

std::string contentOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

EditedText editText(const GitQueries& git, const std::string& name, const std::string& text) {
    EditedText edited{.file = pathOfGitFile(git, name)};
    if (!(std::ofstream(edited.file, std::ios::binary) << text << std::flush)) {
        edited.failure = "The file " + inQuotes(edited.file) + " cannot be written";
        edited.errorClass = NEBSourceControlIOErrorClass;
        return edited;
    }
    const std::string& folder = git.workingCopy().location;
    const EditorChoice editor = editorOfUser(git.interruption(), folder);
    edited.failure = editor.command.empty()
                         ? "There is no editor: " + editor.failure
                         : edit(git.interruption(), editor.command, edited.file, folder);
    if (edited.failure.empty()) {
        edited.text = contentOfFile(edited.file);
    } else {
        edited.errorClass = NEBSourceControlEditorFailedErrorClass;
    }
    return edited;
}

}  // namespace neb::nebsc
