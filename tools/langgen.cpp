// Compiles the language files into what the product carries: the table of named texts (texts.h, texts.cpp) and the
// string resources of numbered ones (strings.rc). Runs on the building machine, in both builds.
//   langgen OUTDIR FILE...     the files in slot order, English first
//   langgen --check FILE...    the checks alone
// Refuses, with file and line: a malformed row, a key given twice, a key that English lacks, and a translation whose
// directives take other arguments than the English ones or that lacks a token or insert.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using std::string;
using std::string_view;

struct Text {
    string key;
    std::u32string value;
    size_t line;
};

struct Language {
    std::filesystem::path file;
    uint32_t id = 0;
    std::vector<Text> texts;

    const Text* Find(string_view key) const
    {
        const auto found = std::ranges::find(texts, key, &Text::key);
        return found == texts.end() ? nullptr : &*found;
    }
};

[[noreturn]] void Fail(const Language& language, size_t line, const string& why)
{
    throw std::runtime_error(language.file.string() + ':' + std::to_string(line) + ": " + why);
}

bool IsNumber(string_view key)
{
    return key.find_first_not_of("0123456789") == string_view::npos;
}

bool IsKey(string_view key)
{
    constexpr string_view kNameChars = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    if (key.empty() || key.find_first_not_of(kNameChars) != string_view::npos)
        return false;
    return !IsNumber(key) || (key.size() <= 5 && std::stoul(string(key)) <= 0xFFFF);
}

// One code point of UTF-8 at the front of the text; 0 for a malformed one.
char32_t TakeCodePoint(string_view& text)
{
    const auto lead = uint8_t(text.front());
    const size_t length = lead < 0x80 ? 1 : lead >> 5 == 6 ? 2 : lead >> 4 == 14 ? 3 : lead >> 3 == 30 ? 4 : 0;
    if (length == 0 || length > text.size())
        return 0;
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((uint8_t(text[i]) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (uint8_t(text[i]) & 0x3F);
    }
    text.remove_prefix(length);
    return code;
}

char32_t Escaped(char c)
{
    constexpr string_view kNames = "nrt\"\\", kValues = "\n\r\t\"\\";
    const size_t at = kNames.find(c);
    return at == string_view::npos ? 0 : char32_t(kValues[at]);
}

// The value behind "key = ", quotes included.
std::u32string ParseValue(string_view quoted, const Language& language, size_t line)
{
    if (quoted.size() < 2 || quoted.front() != '"' || quoted.back() != '"')
        Fail(language, line, "a text stands in double quotes");
    quoted = quoted.substr(1, quoted.size() - 2);
    std::u32string value;
    while (!quoted.empty()) {
        char32_t code = 0;
        if (quoted.front() == '\\' && quoted.size() > 1) {
            code = Escaped(quoted[1]);
            quoted.remove_prefix(2);
        } else if (quoted.front() != '"' && quoted.front() != '\\') {
            code = TakeCodePoint(quoted);
        }
        if (code == 0)
            Fail(language, line, "unknown escape, bare quote or malformed UTF-8");
        value += code;
    }
    return value;
}

void ParseRow(string_view row, Language& language, size_t line)
{
    constexpr string_view kLanguage = "language 0x", kAssign = " = ";
    if (row.starts_with(kLanguage)) {
        language.id = uint32_t(std::stoul(string(row.substr(kLanguage.size())), nullptr, 16));
        return;
    }
    const size_t assign = row.find(kAssign);
    if (assign == string_view::npos || !IsKey(row.substr(0, assign)))
        Fail(language, line, "neither a key with its text nor a comment");
    const string key(row.substr(0, assign));
    if (language.Find(key))
        Fail(language, line, key + " is given twice");
    language.texts.push_back({key, ParseValue(row.substr(assign + kAssign.size()), language, line), line});
}

Language ReadLanguage(const std::filesystem::path& file)
{
    Language language{file, 0, {}};
    std::ifstream in(file, std::ios::binary);
    if (!in)
        Fail(language, 0, "cannot be read");
    string row;
    for (size_t line = 1; std::getline(in, row); ++line)
        if (!row.empty() && row.front() != '#')
            ParseRow(row, language, line);
    if (language.id == 0)
        Fail(language, 0, "no language id");
    return language;
}

// What a text asks of its caller: the arguments that its directives take, in order, then its tokens and inserts.
struct Demands {
    std::vector<string> arguments, names;
    bool operator==(const Demands&) const = default;
};

bool IsInsert(std::u32string_view rest)   // %1 and so on, where nothing that a directive holds follows
{
    constexpr std::u32string_view kInDirectives = U"0123456789.+-#hlI!&*,:EGXcdefgiosuxz";
    return rest.size() >= 2 && rest[0] == U'%' && rest[1] >= U'1' && rest[1] <= U'9' &&
           (rest.size() == 2 || kInDirectives.find(rest[2]) == rest.npos);
}

// The length of the directive at the front of rest; what it takes goes into demands.
size_t TakeDirective(std::u32string_view rest, Demands& demands)
{
    constexpr std::u32string_view kConversions = U"!&*,:EGXcdefgiosuxz", kNoArgument = U"!&*,:", kFloats = U"eEfgG";
    const size_t end = rest.find_first_of(kConversions, 1);
    if (end == rest.npos)
        return 1;
    const char32_t conversion = rest[end];
    const bool wide = rest.substr(0, end).find(U"I64") != rest.npos;
    if (kFloats.find(conversion) != rest.npos)
        demands.arguments.emplace_back("double");
    else if (conversion == U's')
        demands.arguments.emplace_back("text");
    else if (kNoArgument.find(conversion) == rest.npos)
        demands.arguments.emplace_back(wide ? "64 bits" : conversion == U'c' ? "character" : "32 bits");
    return end + 1;
}

Demands DemandsOf(std::u32string_view text)
{
    Demands demands;
    for (size_t i = 0; i < text.size();) {
        const auto rest = text.substr(i);
        const size_t close = rest.starts_with(U"$(") ? rest.find(U')') : rest.npos;
        if (close != rest.npos || IsInsert(rest)) {
            const auto name = rest.substr(0, close != rest.npos ? close : 2);
            demands.names.emplace_back(name.begin(), name.end());
            i += name.size();
        } else if (rest.starts_with(U"%%") || rest.starts_with(U"$$") || rest.starts_with(U"$%")) {
            i += 2;
        } else {
            i += rest.front() == U'%' || rest.front() == U'$' ? TakeDirective(rest, demands) : 1;
        }
    }
    std::ranges::sort(demands.names);
    return demands;
}

void Check(const Language& english, const Language& translation)
{
    for (const Text& text : translation.texts) {
        const Text* const reference = english.Find(text.key);
        if (!reference)
            Fail(translation, text.line, text.key + " is not in " + english.file.filename().string());
        if (DemandsOf(reference->value) != DemandsOf(text.value))
            Fail(translation, text.line, text.key + " has other directives, tokens or inserts than the English text");
    }
}

// In UTF-16, everything but plain ASCII as \x escapes, which the C++ and the resource compiler both read; a character
// behind an escape that could lengthen it gets its own literal in C++ (Break) and an escape in resources.
string Literal(std::u32string_view text, const char* prefix)
{
    string out = prefix;
    char unit[12];
    const auto escape = [&](char32_t c) {
        std::snprintf(unit, sizeof unit, "\\x%04X", unsigned(c));
        out += unit;
    };
    bool escaped = false;
    for (const char32_t c : text) {
        const bool hexDigit = c < 0x80 && std::isxdigit(int(c));
        const bool plain = c >= 0x20 && c < 0x7F && c != U'"' && c != U'\\' && !(escaped && hexDigit);
        if (plain)
            out += char(c);
        else if (c <= 0xFFFF)
            escape(c);
        else {
            escape(0xD800 + ((c - 0x10000) >> 10));
            escape(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
        escaped = !plain;
    }
    return out + '"';
}

std::ofstream Create(const std::filesystem::path& file)
{
    std::ofstream out(file, std::ios::binary);
    if (!out)
        throw std::runtime_error(file.string() + ": cannot be written");
    out << "// Made from the language files; changes belong there.\n";
    return out;
}

void WriteHeader(std::ofstream out, const Language& english)
{
    out << "#pragma once\n\n#include \"kernel/lang_entry.h\"\n\n";
    for (const Text& text : english.texts)
        if (!IsNumber(text.key))
            out << "extern QXLANGENTRY qxtext_" << text.key << ";\n";
}

string CellName(const Language& language, const Text& text)
{
    return text.key + '_' + std::to_string(language.id);
}

void WriteTable(std::ofstream out, const std::vector<Language>& languages)
{
    out << "#include \"kernel/lang/texts.h\"\n\nQXLANG_TABLE DWORD g_qxlangIds[QXLANG_SLOTS] = {";
    for (const Language& language : languages)
        out << language.id << ", ";
    out << "};\n\nnamespace {\n";
    for (const Language& language : languages)
        for (const Text& text : language.texts)
            if (!IsNumber(text.key))
                out << "QXLANG_TEXTS WCHAR " << CellName(language, text) << "[] = TEXT(" << Literal(text.value, "\"")
                    << ");\n";
    out << "}\n\n";
    for (const Text& text : languages.front().texts) {
        if (IsNumber(text.key))
            continue;
        out << "QXLANG_TABLE QXLANGENTRY qxtext_" << text.key << " = {QXLANG_MARK, QXLANG_SLOTS, {";
        for (const Language& language : languages)
            out << CellName(language.Find(text.key) ? language : languages.front(), text) << ", ";
        out << "}, 0};\n";
    }
}

void WriteResources(std::ofstream out, const std::vector<Language>& languages)
{
    for (const Language& language : languages) {
        std::map<unsigned long, const Text*> numbered;
        for (const Text& text : language.texts)
            if (IsNumber(text.key))
                numbered[std::stoul(text.key)] = &text;
        if (numbered.empty())
            continue;
        out << "\nLANGUAGE " << (language.id & 0x3FF) << ", " << (language.id >> 10) << "\nSTRINGTABLE\nBEGIN\n";
        for (const auto& [id, text] : numbered)
            out << "    " << id << " " << Literal(text->value, "L\"") << "\n";
        out << "END\n";
    }
}

int Run(std::vector<string_view> arguments)
{
    if (arguments.size() < 2)
        throw std::runtime_error("usage: langgen OUTDIR|--check FILE...");
    std::vector<Language> languages;
    for (const string_view file : std::vector(arguments.begin() + 1, arguments.end()))
        languages.push_back(ReadLanguage(file));
    for (const Language& language : languages)
        Check(languages.front(), language);
    if (arguments.front() == "--check")
        return 0;
    const std::filesystem::path out(arguments.front());
    WriteHeader(Create(out / "texts.h"), languages.front());
    WriteTable(Create(out / "texts.cpp"), languages);
    WriteResources(Create(out / "strings.rc"), languages);
    return 0;
}

}   // namespace

int main(int argc, char** argv)
{
    try {
        return Run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
