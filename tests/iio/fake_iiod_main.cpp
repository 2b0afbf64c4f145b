// fake_iiod PORT KIND [Key=Value...]: serves a board that counts until it is killed. KIND is s16, u12 or s24; the keys
// are the numbers of FakeIioBoard.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>

#include "tests/support/fake_iiod.h"

int main(int count, char** arguments) {
    using tarno2::test::FakeIioBoard;
    const std::map<std::string, std::vector<tarno2::test::FakeScanElement>> kinds = {
        {"s16", {{"voltage0", "le:s16/16>>0", "0.305176", ""}, {"voltage1", "le:s16/16>>0", "0.305176", ""}}},
        {"u12", {{"voltage0", "be:u12/16>>4", "1.220703", ""}, {"voltage1", "le:u12/16>>0", "1.220703", ""}}},
        {"s24", {{"voltage0", "le:s24/32>>0", "0.001192", ""}, {"voltage1", "be:s24/32>>8", "0.001192", ""}}}};
    const auto kind = count > 2 ? kinds.find(arguments[2]) : kinds.end();
    if (kind == kinds.end()) {
        std::fprintf(stderr,
                     "Usage: fake_iiod PORT s16|u12|s24 [cutAfter=N] [goneAfter=N] [loseAt=N] [loseFrames=N]\n");
        return 2;
    }
    FakeIioBoard board;
    board.elements = kind->second;
    board.timestamp = true;
    const std::map<std::string, uint64_t FakeIioBoard::*> keys = {{"cutAfter", &FakeIioBoard::cutAfter},
                                                                  {"goneAfter", &FakeIioBoard::goneAfter},
                                                                  {"loseAt", &FakeIioBoard::loseAt},
                                                                  {"loseFrames", &FakeIioBoard::loseFrames}};
    for (int i = 3; i < count; ++i) {
        const std::string argument = arguments[i];
        const auto key = keys.find(argument.substr(0, argument.find('=')));
        if (key == keys.end()) {
            std::fprintf(stderr, "Unknown: %s\n", arguments[i]);
            return 2;
        }
        board.*key->second = std::strtoull(argument.c_str() + key->first.size() + 1, nullptr, 10);
    }
    const tarno2::test::FakeIiod server(board, static_cast<uint16_t>(std::atoi(arguments[1])));
    if (server.uri().empty()) {
        std::fprintf(stderr, "The port %s can't be had\n", arguments[1]);
        return 1;
    }
    std::printf("%s\n", server.uri().c_str());
    std::fflush(stdout);
    while (true) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}
