#pragma once

#include <cstdarg>
#include <string>

namespace tarno2 {

/// Numbers in files have a decimal point whatever the user's locale says. While an object of this class lives, the C
/// library's number formatting and parsing of this thread use the "C" locale.
class CNumericLocale {
public:
    CNumericLocale();
    ~CNumericLocale();
    CNumericLocale(const CNumericLocale&) = delete;
    CNumericLocale& operator=(const CNumericLocale&) = delete;

private:
    void* previous_ = nullptr;  ///< the thread's earlier locale
    std::string previousName_;  ///< its name, on systems that know locales by name only
};

/// printf into a string, in the "C" locale. Empty when the format is wrong.
[[nodiscard]] std::string formatText(const char* format, ...)
#ifdef __clang__  // which knows no other dialect
    __attribute__((format(printf, 1, 2)));
#else
    __attribute__((format(gnu_printf, 1, 2)));
#endif
[[nodiscard]] std::string formatTextV(const char* format, va_list arguments);

}  // namespace tarno2
