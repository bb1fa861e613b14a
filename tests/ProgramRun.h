#pragma once
// Runs the real `nimbra-prefs` program with arguments and standard input, for tests of its commands.

#include <nlohmann/json.hpp>

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
/// Runs another program (a copy of `nimbra-prefs`, say) with arguments, and with environment
/// ("NAME=value", each) added to the test's own.
ProgramRun runExecutable(const std::string& program, const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {});
/// One JSON value per line of text.
std::vector<nlohmann::json> jsonLines(const std::string& text);

}  // namespace test
