# Makes a header of the style sheet: cmake -DSTYLE=<file> -DOUTPUT=<file> -P EmbedStyle.cmake
file(READ ${STYLE} style)
file(WRITE ${OUTPUT} "#pragma once

namespace storefront {

inline constexpr const char* style = R\"css(${style})css\";

} // namespace storefront
")
