# Writes OUTPUT, the source of embeddedPages(): every page of PAGES (their paths, joined by "|") under its file name. A
# page's link to page.css is replaced by the style itself, so that a page needs nothing but itself.
file(READ ${STYLE} style)
set(entries "")
string(REPLACE "|" ";" pages "${PAGES}")
foreach(page IN LISTS pages)
    get_filename_component(name ${page} NAME)
    file(READ ${page} html)
    string(REPLACE "<link rel=\"stylesheet\" href=\"page.css\">" "<style>\n${style}</style>" html "${html}")
    string(APPEND entries "        {\"${name}\", R\"page(${html})page\"},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"Simulator/Service/Pages/EmbeddedPages.h\"

namespace vorlane::service {

std::map<std::string, std::string> embeddedPages() {
    return {
${entries}    };
}

}  // namespace vorlane::service
")
