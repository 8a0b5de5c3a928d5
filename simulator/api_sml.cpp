#include <algorithm>
#include <cstring>

#include "common/export.h"
#include "simulator/Core.h"
#include "simulator/areas/Session.h"

using namespace vexsim;

namespace {

/** The text of a field that its writer may have left without a terminator. */
std::string bounded(const char* field, size_t size) {
    return {field, strnlen(field, size)};
}

bool notAList(const vex_smlrequest_s* records, int32_t count) {
    return count < 0 || (records == nullptr && count > 0);
}

std::vector<std::string> keysOf(const vex_smlrequest_s* records, int32_t count) {
    ApiCall::begin();
    std::vector<std::string> keys;
    if (notAList(records, count)) return keys;
    keys.reserve(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) keys.push_back(bounded(records[i].key, VEX_SML_KEY_SIZE));
    return keys;
}

/** What a read of a key gives, faults included; how its value is stored is the caller's affair. */
Reading readKey(ApiCall& call, const std::string& key, Effect& effect) {
    if (!call.faultless()) effect = call.onKey(key);
    if (effect.status) return {*effect.status, {}};
    Reading reading = effect.value ? Reading{Ok, *effect.value} : call.device().read(key);
    if (effect.truncate && reading.value.size() > *effect.truncate) reading.value.resize(*effect.truncate);
    return reading;
}

void store(vex_smlrequest_s& record, const Reading& reading, bool unterminated) {
    constexpr size_t kField = VEX_SML_VALUE_SIZE;
    const size_t room = unterminated ? kField : kField - 1;
    std::memset(record.value, unterminated ? '#' : '\0', kField);
    std::memcpy(record.value, reading.value.data(), std::min(reading.value.size(), room));
    record.status = reading.status;
}

uint32_t carryOut(Switch& device, const Command& command) {
    if (command.key.compare(0, 4, "Cmd.") == 0) {
        const Area* const area = findCommandArea(command.key);
        return area == nullptr ? UnknownKey : area->command(device, command);
    }
    if (command.key.compare(0, 7, "Config.") == 0) return setConfig(device, command);
    return device.read(command.key).status == Ok ? ReadOnly : UnknownKey;
}

/** Writes one key, or carries a command out; faults may keep it from that, or lie about it. */
uint32_t writeKey(ApiCall& call, const Command& command) {
    if (call.faultless()) return carryOut(call.device(), command);
    const Effect effect = call.onKey(command.key);
    if (effect.status && !effect.carriedOut) return *effect.status;
    if (effect.inPart) call.device().part<Zoning>().editFailed = false;
    const uint32_t status = carryOut(call.device(), command);
    return effect.status.value_or(status);
}

}  // namespace

DC_EXPORT int32_t vex_smlGetBatch(uint32_t handle, vex_smlrequest_s* records, int32_t count) {
    ApiCall call("vex_smlGetBatch", keysOf(records, count), handle);
    if (call.misused(notAList(records, count))) return call.refusal();
    for (int32_t i = 0; i < count; ++i) {
        Effect effect;
        const Reading reading = readKey(call, call.keys()[static_cast<size_t>(i)], effect);
        store(records[i], reading, effect.unterminated);
    }
    return call.done(Ok);
}

DC_EXPORT int32_t vex_smlSetBatch(uint32_t handle, vex_smlrequest_s* records, int32_t count) {
    ApiCall call("vex_smlSetBatch", keysOf(records, count), handle);
    if (call.misused(notAList(records, count))) return call.refusal();
    for (int32_t i = 0; i < count; ++i) {
        const auto index = static_cast<size_t>(i);
        const std::string value = bounded(records[i].value, VEX_SML_VALUE_SIZE);
        records[i].status = writeKey(call, {call.keys()[index], value, call.keys(), index, handle});
    }
    return call.done(Ok);
}

DC_EXPORT int32_t vex_smlGet(uint32_t handle, const char* key, char** value, uint32_t* extra) {
    ApiCall call("vex_smlGet", {key}, handle);
    if (call.misused(key == nullptr || notEmpty(value) || extra == nullptr || *extra != 0))
        return call.refusal();
    if (call.nulled()) {
        *value = nullptr;
        return call.done(Ok);
    }
    Effect effect;
    Reading reading = readKey(call, key, effect);
    if (reading.status != Ok) return call.done(static_cast<int32_t>(reading.status));
    // This text has no fixed field, so it always ends; a value that fills a record's field is 256 characters.
    if (effect.unterminated && reading.value.size() < VEX_SML_VALUE_SIZE)
        reading.value.resize(VEX_SML_VALUE_SIZE, '#');
    char* const text = Core::instance().texts.give(reading.value);
    if (text == nullptr) return call.done(BadArgument);
    *value = text;
    *extra = 0;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_smlSet(uint32_t handle, const char* key, void** reply) {
    ApiCall call("vex_smlSet", {key}, handle);
    if (call.misused(key == nullptr || notEmpty(reply))) return call.refusal();
    // A plain setting has its value behind the key: "Config.Services.SSHEnable.True".
    const uint32_t status = writeKey(call, splitOperand(call.device(), {key, {}, call.keys(), 0, handle}));
    *reply = nullptr;
    return call.done(static_cast<int32_t>(status));
}
