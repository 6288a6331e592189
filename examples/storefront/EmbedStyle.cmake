# Makes a source of the style sheet: cmake -DSTYLE=<file> -DOUTPUT=<file> -P EmbedStyle.cmake
file(READ ${STYLE} style)
file(WRITE ${OUTPUT} "#include \"examples/storefront/app/Style.h\"

namespace storefront {

const char* const style = R\"css(${style})css\";

} // namespace storefront
")
