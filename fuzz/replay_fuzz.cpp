// Files that the replay driver plays: letters that choose (d: a data file with its description, l: it is looped, c:
// only the last channel), the .wav or data file, the description.

#include "drivers/replay/recording.h"
#include "fuzz/scratch_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tarno2::drivers;
    static const ScratchFolder folder;
    InputParts parts(data, size);
    const auto choice = parts.choice();
    const std::string path = folder.write(choice.has('d') ? "run.dat" : "run.wav", parts.next());
    folder.write("run.txt", parts.next());
    Recording recording;
    std::string reason;
    if (!openRecording(path, recording, reason)) {
        require(!reason.empty());
        return 0;
    }
    const uint32_t width = recording.board.format.m_nBytes;
    const uint64_t bytes = std::filesystem::file_size(path);
    require((width == 2 || width == 4) && recording.board.channels >= 1 && recording.board.channels <= 160);
    const uint32_t inFile = recording.sample ? bytesOf(*recording.sample) : width;
    require(recording.dataOffset + recording.frames * inFile * recording.board.channels <= bytes);
    tarno2::sdk::Measurement measurement;
    measurement.frequency = recording.board.usualFrequency;
    for (uint32_t i = choice.has('c') ? recording.board.channels - 1 : 0; i < recording.board.channels; ++i) {
        measurement.channels.push_back(static_cast<int32_t>(i));
        measurement.gains.push_back(1);
    }
    const auto source = playRecording(recording, measurement, choice.has('l'));
    require(source != nullptr);
    constexpr uint64_t kBlock = 100;
    std::vector<std::byte> block(kBlock * width * measurement.channels.size());
    uint64_t played = 0;
    uint64_t got = kBlock;
    while (got == kBlock && played <= recording.frames) {
        got = source->fill(played, block.data(), kBlock);
        played += got;
    }
    require(choice.has('l') ? recording.frames == 0 || played > recording.frames : played == recording.frames);
    return 0;
}
