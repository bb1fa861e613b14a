#pragma once
// Runs the real `nimbra-prefs` program with arguments and standard input, for tests of its commands.

#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <string>
#include <vector>

namespace test {

struct ProgramRun {
    int status = -1;
    std::string output;  // standard output
    std::string errors;  // standard error
};

/// Runs `nimbra-prefs ARGS` with input on standard input.
ProgramRun runProgram(const std::vector<std::string>& arguments, const std::string& input = "");
/// Runs another program (a copy of `nimbra-prefs`, say) with arguments, with environment
/// ("NAME=value", each) added to the test's own, and with input on standard input.
ProgramRun runExecutable(const std::string& program, const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {}, const std::string& input = "");
/// Starts `nimbra-prefs ARGS` with its output discarded, and does not wait for it.
pid_t startProgram(const std::vector<std::string>& arguments);
/// Waits for a started program: its exit status, or -1 when a signal ended it.
int waitForProgram(pid_t pid);
/// One JSON value per line of text.
std::vector<nlohmann::json> jsonLines(const std::string& text);

}  // namespace test
