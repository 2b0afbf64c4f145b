#include "drivers/common/generator_driver.h"

#include <utility>

namespace tarno2::drivers {

GeneratorDriver::GeneratorDriver(const char* name)
    : Driver(name), producer_(ring(), [this](const StreamPlan& plan) {
          if (plan.endCause == kADCEndLost) {
              lost(plan.endLost);
          } else {
              gone(plan.endCause, plan.endText);
          }
      }) {}

bool GeneratorDriver::begin(const sdk::Board& board, const sdk::Measurement& measurement) {
    StreamPlan plan;
    plan.channels = static_cast<uint32_t>(measurement.channels.size());
    plan.framesPerSecond = measurement.framesPerSecond();
    std::unique_ptr<SampleSource> source = prepare(board, measurement, plan);
    if (source == nullptr) {
        return false;
    }
    return producer_.start(std::move(source), plan) || fail("The system gave no thread or event.");
}

}  // namespace tarno2::drivers
