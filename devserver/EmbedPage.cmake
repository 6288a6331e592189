# Makes one C++ source of the page's parts: cmake -DPAGE=<dir> -DOUTPUT=<file> -P EmbedPage.cmake
file(READ ${PAGE}/index.html html)
file(READ ${PAGE}/style.css style)
file(READ ${PAGE}/app.js script)
file(READ ${PAGE}/pushes.js pushes)
string(REPLACE "/* style.css */" "${style}" html "${html}")
string(REPLACE "/* app.js */" "${script}" html "${html}")
string(REPLACE "/* pushes.js */" "${pushes}" html "${html}")

file(WRITE ${OUTPUT} "#include \"devserver/LivePage.h\"

namespace zentavo::devserver {

std::string_view LivePage::html() noexcept {
    return R\"page(${html})page\";
}

} // namespace zentavo::devserver
")
