#include "src/i18n/language_codes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace modLocalize {
namespace {

struct Language {
    std::u16string_view code;
    std::uint16_t id;
};

/// The system's own abbreviations.
constexpr std::array<Language, 39> kLanguages{{
    {u"ENU", 0x0409}, {u"ENG", 0x0809}, {u"ENA", 0x0C09}, {u"ENC", 0x1009}, {u"ENZ", 0x1409},
    {u"ENI", 0x1809}, {u"DEU", 0x0407}, {u"DES", 0x0807}, {u"DEA", 0x0C07}, {u"DEL", 0x1007},
    {u"DEC", 0x1407}, {u"ESP", 0x040A}, {u"ESM", 0x080A}, {u"ESN", 0x0C0A}, {u"ESG", 0x100A},
    {u"ESC", 0x140A}, {u"ESA", 0x180A}, {u"ESD", 0x1C0A}, {u"ESV", 0x200A}, {u"ESO", 0x240A},
    {u"ESR", 0x280A}, {u"ESS", 0x2C0A}, {u"ESH", 0x480A}, {u"ESI", 0x4C0A}, {u"ESU", 0x500A},
    {u"FRA", 0x040C}, {u"FRB", 0x080C}, {u"FRC", 0x0C0C}, {u"FRS", 0x100C}, {u"FRL", 0x140C},
    {u"ITA", 0x0410}, {u"ITS", 0x0810}, {u"JPN", 0x0411}, {u"NLD", 0x0413}, {u"NLB", 0x0813},
    {u"NOR", 0x0414}, {u"NON", 0x0814}, {u"PTB", 0x0416}, {u"PTG", 0x0816},
}};

constexpr std::array<std::pair<std::uint16_t, LanguageFont>, 4> kFonts{{
    {std::uint16_t{1042}, {u"\uAD74\uB9BC", 129}},                                 // Gulim
    {std::uint16_t{1028}, {u"\u65B0\u7D30\u660E\u9AD4", 136}},                     // PMingLiU
    {std::uint16_t{1041}, {u"\uFF2D\uFF33 \uFF30\u30B4\u30B7\u30C3\u30AF", 128}},  // MS PGothic
    {std::uint16_t{2052}, {u"\u5B8B\u4F53", 134}},                                 // SimSun
}};

char16_t upper(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

}  // namespace

std::u16string codeOfLanguage(std::uint16_t id) {
    const auto found = std::ranges::find(kLanguages, id, &Language::id);
    return std::u16string{found == kLanguages.end() ? u"ERROR" : found->code};
}

std::uint16_t languageOfCode(std::u16string_view code) {
    const auto found = std::ranges::find_if(kLanguages, [&](const Language& language) {
        return std::ranges::equal(language.code, code, {}, {}, upper);
    });
    return found == kLanguages.end() ? std::uint16_t{0} : found->id;
}

const LanguageFont* fontOfLanguage(std::uint16_t id) {
    const auto found =
        std::ranges::find_if(kFonts, [&](const auto& font) { return font.first == id; });
    return found == kFonts.end() ? nullptr : &found->second;
}

}  // namespace modLocalize
