// What a host asks of an effect that is set up, outside frames: every command that effects without
// a user interface of their own meet there, and those that they need not know.
#pragma once

#include <host/session.h>

#include <functional>
#include <string>
#include <vector>

#include "run.h"

namespace check {

/// How a question was answered.
struct Reply {
    std::string error;               ///< in words; empty for status 0
    std::vector<std::string> wrong;  ///< whatever the status
    std::string said;                ///< when all is well
};

struct Question {
    RowText text;
    std::function<Reply(host::Session&)> ask;
};

/// Those that the effect's declarations bring about, in a host's order.
std::vector<Question> questions(const Declared& declared);
/// Those of them whose rows do not fail, as an application puts them.
std::vector<Question> standing_questions(const Run& run, const Identity& identity);

/// Notes the commands that the effect's declarations bring about and that this host cannot send.
void leave_out_commands(Run& run);

}  // namespace check
