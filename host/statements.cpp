#include "host/statements.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>

#include "host/input_error.h"

namespace {

using Words = std::vector<std::string>;

Words split(const std::string& text, char separator) {
    Words parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

Words wordsOf(const std::string& text) {
    Words words;
    std::istringstream stream(text);
    for (std::string word; stream >> std::quoted(word);) words.push_back(word);
    return words;
}

/** The operands of a statement of this form; nullopt for a statement of another. */
std::optional<Words> match(const StatementForm& form, const Words& words) {
    const Words pattern = split(form.pattern, ' ');
    if (pattern.size() != words.size()) return std::nullopt;
    Words operands;
    for (size_t i = 0; i < words.size(); ++i) {
        const Words choices = split(pattern[i], '|');
        const bool operand = std::isupper(static_cast<unsigned char>(pattern[i][0])) != 0;
        if (!operand && std::find(choices.begin(), choices.end(), words[i]) == choices.end()) {
            return std::nullopt;
        }
        if (operand || choices.size() > 1) operands.push_back(words[i]);
    }
    return operands;
}

}  // namespace

Statement parseStatement(const std::vector<StatementForm>& language, const std::string& text,
                         const std::string& where) {
    const Words words = wordsOf(text);
    for (const StatementForm& form : language) {
        if (std::optional<Words> operands = match(form, words)) {
            return {form.code, std::move(*operands), text};
        }
    }
    throw HostInputError(where + ": not understood: " + text);
}

std::vector<Statement> parseScript(const std::vector<StatementForm>& language, const std::string& path) {
    std::ifstream file;
    if (path != "-") file.open(path);
    std::istream& script = path == "-" ? std::cin : file;
    if (!script) throw HostInputError(path + ":1: cannot be read");
    std::vector<Statement> statements;
    std::string line;
    for (int number = 1; std::getline(script, line); ++number) {
        const size_t begin = line.find_first_not_of(" \t\r");
        if (begin == std::string::npos || line[begin] == '#') continue;
        line = line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
        statements.push_back(parseStatement(language, line, path + ':' + std::to_string(number)));
    }
    return statements;
}

std::string describe(const std::vector<StatementForm>& language) {
    std::ostringstream text;
    for (const StatementForm& form : language) {
        const bool bare = *form.meaning == '\0';
        text << "  " << std::left << std::setw(bare ? 0 : 36) << form.pattern;
        text << (bare ? "" : "  ") << form.meaning << '\n';
    }
    return text.str();
}
