# Makes one C++ source of the inbox's built-in messages: cmake -DFOLDER=<dir> -DOUTPUT=<file> -P EmbedInbox.cmake
file(GLOB files ${FOLDER}/*.json)
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

#include \"devserver/InboxMessages.h\"

namespace zentavo::devserver {

std::span<const InboxSeed> builtInInbox() noexcept {
    static constexpr std::array<InboxSeed, ${count}> seeds{{
${entries}    }};
    return seeds;
}

} // namespace zentavo::devserver
")
