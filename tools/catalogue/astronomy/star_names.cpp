#include "astronomy/star_names.h"

#include <cstddef>
#include <optional>
#include <unordered_map>

namespace lumivar {
namespace {

// The table as CMake makes it of data/bright-stars.csv, sorted by magnitude.
constexpr NamedStar kStars[] = {
#include "bright_stars.inc"
};

struct Abbreviation {
    std::string_view whole;
    std::string_view abbreviated;
};

// As the table writes them, in lower case; what stands twice has two ways to be written.
constexpr Abbreviation kGreekLetters[] = {
    {"alpha", "alp"},   {"alf", "alp"},   {"beta", "bet"},    {"gamma", "gam"}, {"delta", "del"},
    {"epsilon", "eps"}, {"zeta", "zet"},  {"eta", "eta"},     {"theta", "the"}, {"tet", "the"},
    {"iota", "iot"},    {"kappa", "kap"}, {"lambda", "lam"},  {"mu", "mu"},     {"nu", "nu"},
    {"xi", "xi"},       {"ksi", "xi"},    {"omicron", "omi"}, {"pi", "pi"},     {"rho", "rho"},
    {"sigma", "sig"},   {"tau", "tau"},   {"upsilon", "ups"}, {"phi", "phi"},   {"chi", "chi"},
    {"psi", "psi"},     {"omega", "ome"}};

// The genitives, in which designations name constellations, without blanks.
constexpr Abbreviation kConstellations[] = {{"andromedae", "and"},
                                            {"antliae", "ant"},
                                            {"apodis", "aps"},
                                            {"aquarii", "aqr"},
                                            {"aquilae", "aql"},
                                            {"arae", "ara"},
                                            {"arietis", "ari"},
                                            {"aurigae", "aur"},
                                            {"bootis", "boo"},
                                            {"caeli", "cae"},
                                            {"camelopardalis", "cam"},
                                            {"cancri", "cnc"},
                                            {"canumvenaticorum", "cvn"},
                                            {"canismajoris", "cma"},
                                            {"canisminoris", "cmi"},
                                            {"capricorni", "cap"},
                                            {"carinae", "car"},
                                            {"cassiopeiae", "cas"},
                                            {"centauri", "cen"},
                                            {"cephei", "cep"},
                                            {"ceti", "cet"},
                                            {"chamaeleontis", "cha"},
                                            {"circini", "cir"},
                                            {"columbae", "col"},
                                            {"comaeberenices", "com"},
                                            {"coronaeaustralis", "cra"},
                                            {"coronaeborealis", "crb"},
                                            {"corvi", "crv"},
                                            {"crateris", "crt"},
                                            {"crucis", "cru"},
                                            {"cygni", "cyg"},
                                            {"delphini", "del"},
                                            {"doradus", "dor"},
                                            {"draconis", "dra"},
                                            {"equulei", "equ"},
                                            {"eridani", "eri"},
                                            {"fornacis", "for"},
                                            {"geminorum", "gem"},
                                            {"gruis", "gru"},
                                            {"herculis", "her"},
                                            {"horologii", "hor"},
                                            {"hydrae", "hya"},
                                            {"hydri", "hyi"},
                                            {"indi", "ind"},
                                            {"lacertae", "lac"},
                                            {"leonis", "leo"},
                                            {"leonisminoris", "lmi"},
                                            {"leporis", "lep"},
                                            {"librae", "lib"},
                                            {"lupi", "lup"},
                                            {"lyncis", "lyn"},
                                            {"lyrae", "lyr"},
                                            {"mensae", "men"},
                                            {"microscopii", "mic"},
                                            {"monocerotis", "mon"},
                                            {"muscae", "mus"},
                                            {"normae", "nor"},
                                            {"octantis", "oct"},
                                            {"ophiuchi", "oph"},
                                            {"orionis", "ori"},
                                            {"pavonis", "pav"},
                                            {"pegasi", "peg"},
                                            {"persei", "per"},
                                            {"phoenicis", "phe"},
                                            {"pictoris", "pic"},
                                            {"piscium", "psc"},
                                            {"piscisaustrini", "psa"},
                                            {"puppis", "pup"},
                                            {"pyxidis", "pyx"},
                                            {"reticuli", "ret"},
                                            {"sagittae", "sge"},
                                            {"sagittarii", "sgr"},
                                            {"scorpii", "sco"},
                                            {"sculptoris", "scl"},
                                            {"scuti", "sct"},
                                            {"serpentis", "ser"},
                                            {"sextantis", "sex"},
                                            {"tauri", "tau"},
                                            {"telescopii", "tel"},
                                            {"trianguli", "tri"},
                                            {"trianguliaustralis", "tra"},
                                            {"tucanae", "tuc"},
                                            {"ursaemajoris", "uma"},
                                            {"ursaeminoris", "umi"},
                                            {"velorum", "vel"},
                                            {"virginis", "vir"},
                                            {"volantis", "vol"},
                                            {"vulpeculae", "vul"}};

/// In lower case, without blanks and hyphens.
std::string squashed(std::string_view name) {
    std::string text;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') {
            text += static_cast<char>(c - 'A' + 'a');
        } else if (c != ' ' && c != '-' && c != '\t') {
            text += c;
        }
    }
    return text;
}

using StarIndex = std::unordered_map<std::string, const NamedStar*>;

StarIndex make_index() {
    StarIndex index;
    for (const NamedStar& star : kStars) {
        if (*star.name != '\0') {
            index.emplace(squashed(star.name), &star);  // the first, brightest one stays
        }
        index.emplace("hip" + std::to_string(star.hip), &star);
        if (star.hr != 0) {
            index.emplace("hr" + std::to_string(star.hr), &star);
        }
    }
    return index;
}

const NamedStar* look_up(const std::string& squashed_name) {
    static const StarIndex index = make_index();
    const auto found = index.find(squashed_name);
    return found == index.end() ? nullptr : found->second;
}

/// "gamma2velorum" as the table has it: "gam2vel". Nothing when it is no such designation.
std::optional<std::string> abbreviated(const std::string& name) {
    std::string text = name;
    for (const auto& [whole, short_form] : kConstellations) {
        // "leonis" ends no longer name, and "leonisminoris" does not end in it.
        if (text.size() > whole.size() && text.ends_with(whole)) {
            text.replace(text.size() - whole.size(), whole.size(), short_form);
            break;
        }
    }
    for (const auto& [whole, short_form] : kGreekLetters) {
        // The letter, perhaps the number of one of several stars, and three letters.
        constexpr std::size_t kConstellation = 3;
        const std::size_t rest = text.size() - whole.size();
        if (text.starts_with(whole) && (rest == kConstellation || rest == kConstellation + 1)) {
            text.replace(0, whole.size(), short_form);
            break;
        }
    }
    return text == name ? std::nullopt : std::optional(text);
}

}  // namespace

std::span<const NamedStar> named_stars() { return kStars; }

const NamedStar* find_star(std::string_view name) {
    const std::string text = squashed(name);
    if (const NamedStar* const star = look_up(text)) {
        return star;
    }
    const std::optional<std::string> designation = abbreviated(text);
    return designation ? look_up(*designation) : nullptr;
}

std::string star_label(const NamedStar& star) {
    // A fainter star may share its name with a brighter one.
    if (*star.name != '\0' && find_star(star.name) == &star) {
        return star.name;
    }
    return "HIP " + std::to_string(star.hip);
}

}  // namespace lumivar
