#pragma once

#include <memory>

#include <tarno2/driver.h>

#include "drivers/common/ring_producer.h"

namespace tarno2::drivers {

/// A driver whose samples are made when they are due: by the clock, or as the host takes them.
class GeneratorDriver : public sdk::Driver {
protected:
    explicit GeneratorDriver(const char* name);

    /// Completes the plan of a measurement that begins and makes its source; null after `fail`.
    virtual std::unique_ptr<SampleSource> prepare(const sdk::Board& board, const sdk::Measurement& measurement,
                                                  StreamPlan& plan) = 0;

    bool begin(const sdk::Board& board, const sdk::Measurement& measurement) final;
    void end() final { producer_.stop(); }
    void fetched() final { producer_.fetched(); }

    [[nodiscard]] const RingProducer& producer() const { return producer_; }

private:
    RingProducer producer_;
};

}  // namespace tarno2::drivers
