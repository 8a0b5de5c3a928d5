#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

/**
 * The small languages of `zone` and `config`: one statement an argument, or one a line of a script. A
 * statement is words with blanks between; a word with blanks in it is quoted ("...", with \ before a quote).
 * In scripts, empty lines and lines that begin with # count for nothing.
 */
struct StatementForm {
    int code;             ///< what the statement means; each language has its own
    const char* pattern;  ///< words as they are, alternatives "a|b", and operands in capitals
    const char* meaning;  ///< for the help
};

/** A statement that was understood. */
struct Statement {
    int code;
    std::vector<std::string> operands;  ///< what stood for alternatives and operands, in order
    std::string text;                   ///< as it was written
};

/** A time as the user writes it, such as "1.5"; nothing for what is no number from 0 to a million. */
std::optional<double> secondsIn(const std::string& text);

/** Understands one statement; `where` stands for it in the message of the HostInputError. */
Statement parseStatement(const std::vector<StatementForm>& language, const std::string& text,
                         const std::string& where);

/** Understands a script, "-" for standard input. Throws HostInputError "FILE:LINE: message". */
std::vector<Statement> parseScript(const std::vector<StatementForm>& language, const std::string& path);

/** The forms of a language with their meanings, one a line. */
std::string describe(const std::vector<StatementForm>& language);

enum ZoneStatement {
    ZONE_LOCK,
    ZONE_UNLOCK,
    ZONE_CHECK,
    ZONE_COMMIT,
    ZONE_CREATE,
    ZONE_CREATE_TYPED,
    ZONE_REMOVE,
    ZONE_ADD_ZONE,
    ZONE_REMOVE_ZONE,
    ZONE_ADD_MEMBER,
    ZONE_REMOVE_MEMBER,
    ZONE_REMOVE_EVERYWHERE,
    ZONE_WAIT,  ///< its operand is a time, which secondsIn() reads
};
const std::vector<StatementForm>& zoneLanguage();

enum ConfigStatement {
    CONFIG_EDIT = ZONE_WAIT + 1,  // so that no code is in both languages
    CONFIG_SET,
    CONFIG_GET,
    CONFIG_SAVE,
    CONFIG_CANCEL,
    CONFIG_BACKUP,
    CONFIG_RESTORE,
};
const std::vector<StatementForm>& configLanguage();

}  // namespace host
