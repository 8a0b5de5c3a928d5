#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/Simulator.h"
#include "simulator/status.h"
#include "vexlib/vexlib.h"

/** The message of the error that the work ends with. */
template <typename Work>
std::string errorOf(Work work) {
    try {
        work();
        return "no error";
    } catch (const vexsim::InputError& error) {
        return error.what();
    }
}

/** A connected client of an otherwise empty switch. */
class SimulatorTest : public ::testing::Test {
  protected:
    SimulatorTest() {
        sim.reset();
        sim.setDelivery(vexsim::Delivery::Manual);
        EXPECT_EQ(vex_IPConnect("localhost", "cim", "", &handle), 0);
    }
    ~SimulatorTest() override { sim.reset(); }

    static vex_smlrequest_s request(const std::string& key, const std::string& value = "") {
        vex_smlrequest_s record{};
        key.copy(record.key, sizeof record.key - 1);
        value.copy(record.value, sizeof record.value - 1);
        return record;
    }

    int32_t command(const std::string& key) const { return command(handle, key); }
    static int32_t command(uint32_t sender, const std::string& key) {
        void* reply = nullptr;
        return vex_smlSet(sender, key.c_str(), &reply);
    }
    uint32_t set(const std::string& key, const std::string& value) const {
        vex_smlrequest_s record = request(key, value);
        EXPECT_EQ(vex_smlSetBatch(handle, &record, 1), 0);
        return record.status;
    }

    vexsim::Simulator& sim = vexsim::Simulator::instance();
    uint32_t handle = 0;
};
