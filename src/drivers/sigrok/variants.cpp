#include "drivers/sigrok/variants.h"

#include <charconv>
#include <cstdint>
#include <glib.h>
#include <libsigrok/libsigrok.h>

namespace tarno2::drivers {

namespace {

template <typename Number>
bool read(const std::string& text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

GVariant* rational(int result, uint64_t numerator, uint64_t denominator) {
    return result == SR_OK ? g_variant_new("(tt)", numerator, denominator) : nullptr;
}

GVariant* flag(const std::string& text) {
    const bool no = text == "0" || text == "no" || text == "false" || text == "off";
    const bool yes = sr_parse_boolstring(text.c_str()) != 0;
    return yes || no ? g_variant_new_boolean(yes ? 1 : 0) : nullptr;
}

}  // namespace

GVariant* variantOf(int type, const std::string& text) {
    uint64_t first = 0;
    uint64_t second = 0;
    double real = 0.0;
    int32_t integer = 0;
    switch (type) {
        case SR_T_UINT64:
            return sr_parse_sizestring(text.c_str(), &first) == SR_OK ? g_variant_new_uint64(first) : nullptr;
        case SR_T_INT32:
            return read(text, integer) ? g_variant_new_int32(integer) : nullptr;
        case SR_T_FLOAT:
            return read(text, real) ? g_variant_new_double(real) : nullptr;
        case SR_T_STRING:
            return g_variant_new_string(text.c_str());
        case SR_T_BOOL:
            return flag(text);
        case SR_T_RATIONAL_PERIOD:
            return rational(sr_parse_period(text.c_str(), &first, &second), first, second);
        case SR_T_RATIONAL_VOLT:
            return rational(sr_parse_voltage(text.c_str(), &first, &second), first, second);
        default:
            return nullptr;
    }
}

}  // namespace tarno2::drivers
