# Makes one C++ source of a folder's files:
#   cmake -DFOLDER=<dir> -DHEADER=<path> -DFUNCTION=<name> -DOUTPUT=<file> -P EmbedFiles.cmake
# HEADER declares FUNCTION, which returns a span of EmbeddedFile.
file(GLOB files ${FOLDER}/*.json ${FOLDER}/*.html ${FOLDER}/*.js)
list(SORT files)
set(entries "")
set(count 0)
foreach(file IN LISTS files)
  file(READ ${file} text)
  get_filename_component(name ${file} NAME)
  string(APPEND entries "    {\"${name}\", R\"seed(${text})seed\"},\n")
  math(EXPR count "${count} + 1")
endforeach()

file(WRITE ${OUTPUT} "#include <array>

#include \"${HEADER}\"

namespace zentavo::devserver {

std::span<const EmbeddedFile> ${FUNCTION}() noexcept {
    static constexpr std::array<EmbeddedFile, ${count}> files{{
${entries}    }};
    return files;
}

} // namespace zentavo::devserver
")
