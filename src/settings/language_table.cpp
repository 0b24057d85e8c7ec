#include "settings/language_table.h"

#include <array>

namespace korvalin {

namespace {
constexpr std::array<LanguageEntry, 19> kLanguages{{
    {"Danish", "da"},    {"Dutch", "nl"},     {"English", "en"},    {"Estonian", "et"},
    {"Finnish", "fi"},   {"French", "fr"},    {"German", "de"},     {"Hungarian", "hu"},
    {"Italian", "it"},   {"Japanese", "ja"},  {"Korean", "ko"},     {"Latvian", "lv"},
    {"Lithuanian", "lt"}, {"Norwegian", "no"}, {"Polish", "pl"},     {"Portuguese", "pt"},
    {"Russian", "ru"},   {"Spanish", "es"},   {"Swedish", "sv"},
}};
}  // namespace

std::span<const LanguageEntry> LanguageTable() { return kLanguages; }

}  // namespace korvalin
