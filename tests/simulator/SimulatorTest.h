#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "simulator/Simulator.h"
#include "simulator/status.h"
#include "vexlib/vexlib.h"

/** A connected client of an otherwise empty switch. */
class SimulatorTest : public ::testing::Test {
  protected:
    SimulatorTest() {
        sim.reset();
        sim.setDelivery(vexsim::Delivery::Manual);
        EXPECT_EQ(vex_IPConnect("localhost", "cim", "", &handle), 0);
    }
    ~SimulatorTest() override { sim.reset(); }

    int32_t command(const std::string& key) const {
        void* reply = nullptr;
        return vex_smlSet(handle, key.c_str(), &reply);
    }

    vexsim::Simulator& sim = vexsim::Simulator::instance();
    uint32_t handle = 0;
};
