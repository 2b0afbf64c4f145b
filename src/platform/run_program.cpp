#include "platform/run_program.h"

#include <cstdio>
#include <exception>
#include <new>

namespace tarno2 {

int runProgram(const char* name, int failed, const std::function<int()>& body) {
    prepareProcess();
    try {
        return body();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: not enough memory\n", name);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", name, error.what());
    } catch (...) {
        std::fprintf(stderr, "%s: an unknown error\n", name);
    }
    return failed;
}

}  // namespace tarno2
