#include "sync/synchro_evaluator.h"

namespace tarno2 {

SynchroEvaluator::SynchroEvaluator(const SynchroSettings& settings, const SynchroSizes& sizes,
                                   const StreamFormat& format)
    : format_(format), analyzer_(settings, sizes, format.facts) {
    analyzer_.reserve(format.channels, format.sampleWidth, format.largestBlock);
}

int32_t SynchroEvaluator::evaluate(std::span<const std::byte> block, EvaluatedBlock& out) {
    return format_.sampleWidth == 4 ? evaluateWords<int32_t>(block, out, Analyze32)
                                    : evaluateWords<int16_t>(block, out, Analyze16);
}

template <typename Word, typename Analyze>
int32_t SynchroEvaluator::evaluateWords(std::span<const std::byte> block, EvaluatedBlock& out, Analyze analyze) {
    const Word* words = nullptr;
    size_t count = 0;
    size_t channels = 0;
    const int32_t result = analyze(analyzer_, reinterpret_cast<const Word*>(block.data()), block.size() / sizeof(Word),
                                   &words, &count, format_.channels, &channels, format_.packed);
    out.data = std::as_bytes(std::span(words, count));
    out.recordFrames = analyzer_.recordFrames();
    out.events = analyzer_.events();
    out.rest = block.subspan(analyzer_.samplesTaken() * sizeof(Word));
    return result;
}

}  // namespace tarno2
