#include "tests/drivers/streaming_rig.h"

#include <thread>

namespace tarno2::test {

StreamingRig::StreamingRig(const std::string& library, const char* variable, const std::string& settings)
    : environment_(variable, settings), driver_(library, folder_.path()) {}

bool StreamingRig::start(const Wish& wish) {
    if (driver_->SelectBoard(1) != 1) {
        return false;
    }
    reader_.emplace(driver_, wish);
    return reader_->ok() && driver_->Start() == 1;
}

std::vector<uint32_t> StreamingRig::readToEnd() {
    for (;;) {
        const ADCStreamEnd ended = end();
        const uint64_t there = ended.m_nCause != kADCEndNone ? uint64_t{ended.m_nPosition} : reader_->written();
        const uint64_t half = reader_->ring() / 2;
        const uint64_t inHalf = half - reader_->position() % half;
        const uint64_t count = std::min(there - reader_->position(), inHalf);
        if (count > 0) {
            EXPECT_EQ(reader_->fetch(static_cast<uint32_t>(count)), 1) << error();
        } else if (ended.m_nCause != kADCEndNone) {
            return reader_->words();
        } else if (reader_->waitForHalf() == 0) {
            ADD_FAILURE() << "The stream did not end after " << there << " samples.";
            return reader_->words();
        }
    }
}

void StreamingRig::waitFor(uint64_t samples) const {
    while (reader_->written() < samples && end().m_nCause == kADCEndNone) {
        std::this_thread::yield();
    }
}

std::string StreamingRig::setting(const std::string& key) const {
    std::vector<ADCSetting> entries(64);
    ADCSettingList list{64, 0, entries.data()};
    EXPECT_EQ(driver_->Get(kADCGetSettings, &list), 1);
    for (uint32_t i = 0; i < list.m_nCount; ++i) {
        if (entries[i].m_sKey == key) {
            return entries[i].m_sValue;
        }
    }
    ADD_FAILURE() << "no setting " << key;
    return {};
}

}  // namespace tarno2::test
