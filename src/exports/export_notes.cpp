#include "exports/exporter.h"

namespace tarno2 {

std::string describe(const ExportNote& note) {
    switch (note.kind) {
        case ExportNote::FullScale:
            return "the samples are codes: " + note.detail;
        case ExportNote::LinesLeftOut:
            return "the digital lines were left out: this format holds channels alone";
        case ExportNote::LowBitsLeftOut:
            return "the lowest " + note.detail + " bits of each code were left out";
        case ExportNote::RateRounded:
            return "the rate is told as " + note.detail + " Hz: this format knows no other one";
        case ExportNote::LastRecordPadded:
            return "the last record was filled up with " + note.detail + " frames that repeat the last one";
        case ExportNote::NamesReplaced:
            return "names with letters that this format does not take were replaced";
        case ExportNote::LimitsRounded:
            return "the limits of channels were rounded to what the header has room for";
        case ExportNote::LongHeader:
            return "the header has " + note.detail + " bytes: numpy.load asks for max_header_size";
        case ExportNote::PassportLeftOut:
            return "names, units, scales, marks and the exact start were left out: the passport of the whole recording "
                   "tells them";
    }
    return {};
}

}  // namespace tarno2
