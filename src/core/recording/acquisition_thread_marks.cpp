#include <algorithm>
#include <iterator>

#include "core/recording/acquisition_thread.h"
#include "platform/clock.h"

// What is marked by the driver and by a line while samples are read; see acquisition_thread_reading.cpp.

namespace tarno2 {

// What the driver has marked meanwhile; the rest of very many with the next pass.
void AcquisitionThread::askMarks() {
    ADCMark mark{};
    size_t count = 0;
    int64_t now = 0;
    while (tellsMarks_ && count < MarkWriter::kMostWaiting) {
        tellsMarks_ = driver_.device().get(kADCGetMark, mark);
        if (!tellsMarks_ || mark.m_nThere == 0) {
            break;
        }
        now = now != 0 ? now : utcMicroseconds();
        const char* const end = std::find(std::begin(mark.m_sText), std::end(mark.m_sText), '\0');
        markAt(MarkSource::Driver, mark.m_nPosition, now, {mark.m_sText, static_cast<size_t>(end - mark.m_sText)});
        ++count;
    }
    if (count > 0) {
        wakeMarks();
    }
}

void AcquisitionThread::markAt(MarkSource source, uint64_t position, int64_t now, std::string_view text) {
    if (keeps_ && position >= origin_) {
        board_.marks().note(source, keptFrame(position), now - age(position), text);
    }
}

void AcquisitionThread::wakeMarks() {
    if (keeps_) {
        board_.marks().wake();
    }
}

// Before the decimation: a pulse between two frames that are kept counts too.
void AcquisitionThread::markEdges(std::span<const std::byte> block) {
    const uint64_t begin = ring_->readPosition();
    const int64_t now = utcMicroseconds();
    bool found = false;
    edges_->scan(block, [&](size_t frame) {
        markAt(MarkSource::Line, begin + frame * board_.settings.channelCount(), now, {});
        found = true;
    });
    if (found) {
        wakeMarks();
    }
}

}  // namespace tarno2
