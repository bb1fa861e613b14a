#pragma once
// The scripted-session language of `nimbra-prefs script`: one command per line; blank lines and
// lines starting with '#' are skipped. Reporting commands print one JSON object per line. A command
// that cannot be carried out prints {"error": MESSAGE, "line": N} and ends the run with status 1.
//
//   open CLASS | set KEY VALUE | write DOMAIN KEY VALUE | tap ID | call NAME | alert TITLE
//   wait SECONDS | reload | back | pick BUNDLEID... | image PATH | cancel | scroll Y
//   show | rows | events | file PATH
//
// VALUE is true, false, an integer, a real (with a '.'), or a string in double quotes; inside it
// a backslash escapes a quote, a backslash, n (new line) or t (tab).

#include "host/Session.h"

#include <istream>
#include <ostream>
#include <string_view>

/// Parses a script VALUE; throws CommandError when it is none of the forms above.
PlistValue parseScriptValue(std::string_view text);

/// Runs every line of in against the session; returns the exit status (0, or 1 after an error).
int runScript(Session& session, std::istream& in, std::ostream& out, std::ostream& diagnostics);

/// Runs one line (already known not to be blank or a comment); output goes to out.
void runScriptLine(Session& session, std::string_view line, std::ostream& out);
