#pragma once

#include "simulator/simulated_clock.h"
#include "tests/adapters/run_until.h"

#include <gtest/gtest.h>

namespace tarnex {

// What keeps the promises of a port is a rig: an adapter, its far side, and a loop for both.
struct Rig {
    virtual ~Rig() = default;
    virtual Clock& LoopClock() = 0;
    // False when condition does not hold within limit.
    virtual bool Run(const std::function<bool()>& condition, Duration limit) = 0;
};

// Part of a rig of the kind Port: the real event loop, or time that a test moves.
template <class Port>
struct OnRealLoop : Port {
    AsioLoop loop;
    Clock& LoopClock() override { return loop; }
    bool Run(const std::function<bool()>& condition, Duration limit) override {
        return RunUntil(loop, condition, limit);
    }
};
template <class Port>
struct OnSimulatedClock : Port {
    SimulatedClock loop;
    Clock& LoopClock() override { return loop; }
    bool Run(const std::function<bool()>& condition, Duration limit) override {
        return loop.RunUntil(condition, limit);
    }
};

template <class Port>
using MakeRig = std::unique_ptr<Port> (*)();

template <class Port, class Made>
std::unique_ptr<Port> Make() {
    return std::make_unique<Made>();
}

// A suite of tests of what a port's header promises. Each adapter is one instantiation:
// INSTANTIATE_TEST_SUITE_P(Simulated, SerialContract, testing::Values(&Make<SerialRig, ...>));
template <class Port>
class Contract : public testing::TestWithParam<MakeRig<Port>> {
  protected:
    bool Until(const std::function<bool()>& condition) { return rig->Run(condition, 60s); }
    // Nothing is expected to happen any more.
    void RunForAWhile() {
        rig->Run([] { return false; }, 30ms);
    }

    const std::unique_ptr<Port> rig = this->GetParam()();
};

} // namespace tarnex
