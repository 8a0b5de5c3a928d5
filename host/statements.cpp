#include "host/statements.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "host/request.h"

namespace host {

const std::vector<StatementForm>& zoneLanguage() {
    static const std::vector<StatementForm> forms{
        {ZONE_LOCK, "lock", "take the fabric's zoning lock, for 90 seconds"},
        {ZONE_CREATE, "create alias|zone|zoneset NAME", "a zone is \"Soft\" unless typed"},
        {ZONE_CREATE_TYPED, "create zone NAME soft|vpf|acl", "a zone of that type"},
        {ZONE_REMOVE, "remove alias|zone|zoneset NAME", ""},
        {ZONE_ADD_ZONE, "add zone NAME to zoneset NAME", ""},
        {ZONE_REMOVE_ZONE, "remove zone NAME from zoneset NAME", ""},
        {ZONE_ADD_MEMBER, "add wwn|port|fcid|alias MEMBER to zone|alias NAME", ""},
        {ZONE_REMOVE_MEMBER, "remove wwn|port|fcid|alias MEMBER from zone|alias NAME", ""},
        {ZONE_REMOVE_EVERYWHERE, "remove wwn|port|fcid|alias MEMBER everywhere",
         "from all zones and aliases"},
        {ZONE_CHECK, "check", "say what a commit would come to, and send nothing"},
        {ZONE_COMMIT, "commit", "send the edits to the switch and give the lock back"},
        {ZONE_UNLOCK, "abandon", "give the lock back; the edits are dropped"},
        {ZONE_WAIT, "wait SECONDS", ""},
    };
    return forms;
}

const std::vector<StatementForm>& configLanguage() {
    static const std::vector<StatementForm> forms{
        {CONFIG_EDIT, "edit", "take admin rights and open an edit"},
        {CONFIG_SET, "set KEY VALUE", "set a key of the configuration in the open edit"},
        {CONFIG_GET, "get KEY", "print the value of any key"},
        {CONFIG_SAVE, "save", "put the edit in force and give admin rights back"},
        {CONFIG_CANCEL, "cancel", "drop the edit and give admin rights back"},
        {CONFIG_BACKUP, "backup", "have the switch keep a copy of its configuration"},
        {CONFIG_RESTORE, "restore", "have the switch go back to that copy"},
    };
    return forms;
}

namespace {

using Words = std::vector<std::string>;

Words splitAt(const std::string& text, char separator) {
    Words parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

Words splitWords(const std::string& text) {
    Words words;
    std::istringstream stream(text);
    for (std::string word; stream >> std::quoted(word);) words.push_back(word);
    return words;
}

/** The operands of a statement of this form; nullopt for a statement of another. */
std::optional<Words> match(const StatementForm& form, const Words& words) {
    const Words pattern = splitAt(form.pattern, ' ');
    if (pattern.size() != words.size()) return std::nullopt;
    Words operands;
    for (size_t i = 0; i < words.size(); ++i) {
        const Words choices = splitAt(pattern[i], '|');
        const bool operand = std::isupper(static_cast<unsigned char>(pattern[i][0])) != 0;
        if (!operand && std::find(choices.begin(), choices.end(), words[i]) == choices.end()) {
            return std::nullopt;
        }
        if (operand || choices.size() > 1) operands.push_back(words[i]);
    }
    return operands;
}

}  // namespace

std::optional<double> secondsIn(const std::string& text) {
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool plain = text.find_first_not_of("0123456789.") == std::string::npos;
    if (!plain || text.empty() || *end != '\0' || seconds > 1e6) return std::nullopt;
    return seconds;
}

Statement parseStatement(const std::vector<StatementForm>& language, const std::string& text,
                         const std::string& where) {
    const Words words = splitWords(text);
    for (const StatementForm& form : language) {
        std::optional<Words> operands = match(form, words);
        if (!operands) continue;
        if (form.code == ZONE_WAIT && !secondsIn(operands->front())) {
            std::string message = where;
            message.append(": ").append(text).append(": ").append(operands->front());
            throw HostInputError(message.append(" is no number of seconds"));
        }
        return {form.code, std::move(*operands), text};
    }
    throw HostInputError(where + ": not understood: " + text);
}

std::vector<Statement> parseScript(const std::vector<StatementForm>& language, const std::string& path) {
    std::ifstream file;
    if (path != "-") file.open(path);
    std::istream& script = path == "-" ? std::cin : file;
    std::error_code error;
    if (!script || (path != "-" && std::filesystem::is_directory(path, error))) {
        throw HostInputError(path + (script ? ": is a folder, not a script" : ":1: cannot be read"));
    }
    std::vector<Statement> statements;
    std::string line;
    for (int number = 1; std::getline(script, line); ++number) {
        if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);  // byte-order mark
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

}  // namespace host
