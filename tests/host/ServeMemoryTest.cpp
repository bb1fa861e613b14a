// A `serve` session left open stays flat in memory: thousands of gestures that rebuild a page do
// not pile up what the earlier builds made. Measured on the real program, as its resident size.

#include "TestSupport.h"

#include <httplib.h>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <regex>

namespace {

/// `nimbra-prefs --root ROOT serve --port 0`, stopped at the end.
class Server {
public:
    explicit Server(const std::filesystem::path& root)
    {
        int out[2];
        if (::pipe(out) != 0)
            throw std::runtime_error("pipe failed");
        _pid = ::fork();
        if (_pid == 0) {
            ::dup2(out[1], 1);
            ::close(out[0]);
            ::close(out[1]);
            std::string exe = test::prefsExe(), rootArg = root.string();
            ::execl(exe.c_str(), exe.c_str(), "--root", rootArg.c_str(), "serve", "--port", "0", static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(out[1]);
        std::string printed;
        std::smatch match;
        const std::regex address(R"(http://127\.0\.0\.1:(\d+)/)");
        char buffer[256];
        while (!std::regex_search(printed, match, address)) {
            ssize_t n = ::read(out[0], buffer, sizeof buffer);
            if (n <= 0)
                break;
            printed.append(buffer, static_cast<std::size_t>(n));
        }
        ::close(out[0]);
        if (match.empty())
            throw std::runtime_error("serve printed no address: " + printed);
        port = std::stoi(match[1]);
    }
    ~Server()
    {
        ::kill(_pid, SIGTERM);
        ::waitpid(_pid, nullptr, 0);
    }
    /// The resident set size now, in KiB.
    long residentKiB() const
    {
        std::ifstream status("/proc/" + std::to_string(_pid) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.rfind("VmRSS:", 0) == 0)
                return std::stol(line.substr(6));
        return -1;
    }

    int port = 0;

private:
    pid_t _pid = -1;
};

}  // namespace

TEST(ServeMemory, RebuildingAPageThousandsOfTimesKeepsTheServerFlat)
{
    test::TempDir root;
    Server server(root.path());
    httplib::Client client("127.0.0.1", server.port);
    auto post = [&](const std::string& path, const std::string& body) {
        auto answer = client.Post(path, body, "application/json");
        return answer ? answer->status : -1;
    };
    ASSERT_EQ(post("/api/open", R"({"class":"NIMRootListController"})"), 200);
    ASSERT_EQ(post("/api/open", R"({"class":"NIMSystemRootPrefsListController"})"), 200);
    // Warm up until the server's event history is full, so that only what the pages keep can grow.
    auto rebuild = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ASSERT_EQ(post("/api/reload", "{}"), 200);
            ASSERT_TRUE(client.Get("/api/state"));
        }
    };
    rebuild(600);
    long before = server.residentKiB();
    rebuild(2000);
    long after = server.residentKiB();
    ASSERT_GT(before, 0);
    // The leak this guards against grew some 40 KiB per rebuild (80 MiB here).
    EXPECT_LT(after - before, 8 * 1024) << "from " << before << " KiB to " << after << " KiB";
}
