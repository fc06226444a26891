# Writes OUTPUT, a C++ source with the bytes of FILES, which are names in FOLDER.
set(arrays "")
set(rows "")
set(index 0)
foreach(name IN LISTS FILES)
    file(READ ${FOLDER}/${name} bytes HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${bytes}")
    string(APPEND arrays "constexpr char bytes${index}[] = \"${bytes}\";\n")
    string(APPEND rows "    {\"/${name}\", {bytes${index}, sizeof bytes${index} - 1}},\n")
    math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUTPUT}
"// Made by EmbedFiles.cmake.
#include \"WebFiles.h\"

namespace neb::nebsc {

namespace {

${arrays}
constexpr WebFile files[] = {
${rows}};

}  // namespace

std::span<const WebFile> webFiles() {
    return files;
}

}  // namespace neb::nebsc
")
