#include "import/other_files.h"

#include "failure.h"

namespace lumivar {
namespace {

[[noreturn]] void refuse(const std::string& file, const char* what, const char* remedy) {
    throw Failure(file + " is " + what + "; " + remedy);
}

}  // namespace

bool begins_fits(std::string_view head) { return head.substr(0, 9) == "SIMPLE  ="; }

void refuse_other_files(std::string_view head, const std::string& file) {
    const auto begins = [&](std::string_view magic) {
        return head.substr(0, magic.size()) == magic;
    };
    if (begins("\xFF\xFE") || begins("\xFE\xFF")) {
        refuse(file, "text in UTF-16", "save it as UTF-8, or convert it: iconv -f UTF-16 -t UTF-8");
    }
    if (begins("LUMIVAR1") || begins("LUMIVAR2")) {
        refuse(file, "a star database already",
               "lumivar catalog merge joins databases, lumivar catalog filter trims them");
    }
    if (begins("PK\x03\x04") || begins("BZh") ||
        begins(std::string_view("\xFD"
                                "7zXZ",
                                5))) {
        refuse(file, "a compressed archive", "unpack it, or compress it as .gz or .zst");
    }
    if (begins("<?xml") || begins("<VOTABLE")) {
        refuse(file, "a VOTable or other XML", "ask the archive for CSV, ECSV or FITS instead");
    }
    if (begins("<!DOCTYPE") || begins("<html") || begins("<HTML")) {
        refuse(file, "a web page and no table",
               "an address may have answered with an error: look at it");
    }
    if (head.find('\0') != std::string_view::npos && !begins_fits(head)) {
        refuse(file, "no text", "it has bytes of zero; give a table as text or a FITS file");
    }
    if (!begins_fits(head) && head.find('\r') != std::string_view::npos &&
        head.find('\n') == std::string_view::npos) {
        refuse(file, "text whose lines end with carriage returns alone",
               "convert it: tr '\\r' '\\n'");
    }
}

}  // namespace lumivar
