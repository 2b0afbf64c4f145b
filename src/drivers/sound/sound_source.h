#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "drivers/common/paced_source.h"
#include "platform/sound_input.h"

namespace tarno2::drivers {

/// The chosen channels of an open input, in the order chosen. Each is below the input's number of channels.
[[nodiscard]] std::unique_ptr<PacedSource> makeSoundSource(std::unique_ptr<SoundInput> input,
                                                           const std::vector<int32_t>& channels);

}  // namespace tarno2::drivers
