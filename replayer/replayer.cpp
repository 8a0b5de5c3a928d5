/*
 * The functions of vexlib as the replayer defines them: each is answered by the recording.
 */
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "recording/interface.h"
#include "replayer/Replay.h"
#include "replayer/arguments.h"
#include "replayer/call_text.h"
#include "replayer/vexreplay.h"

namespace vexreplay {

namespace {

constexpr uint32_t kUnknownKey =
    201;  ///< of a key that was never recorded; the simulated switch has the same

template <typename Kind>
constexpr bool kEnds = std::is_same_v<Kind, recording::Destroyed> || std::is_same_v<Kind, recording::Removed>;

/** Answers each key of a batch by itself, from other recorded calls that read the key. */
bool answerKeys(Parts& parts, vex_smlrequest_s* records) {
    for (int32_t i = 0; records != nullptr && i < parts.count; ++i) {
        const auto answer = Replay::instance().answerKey(std::string(boundedText(records[i].key)));
        fillField(records[i].value, answer ? answer->value : "");
        records[i].status = answer ? answer->status : kUnknownKey;
    }
    return true;
}

bool answerKey(Parts& parts, const char* key, char** value, uint32_t* extra) {
    if (key == nullptr || value == nullptr || extra == nullptr) return false;
    const auto answer = Replay::instance().answerKey(key);
    if (!answer || answer->status != 0) return false;
    *value = parts.handles.text(0, answer->value);
    *extra = 0;
    return true;
}

template <typename Row, typename Arguments = typename Row::Arguments>
struct Replayer;

template <typename Row, typename... Kind>
struct Replayer<Row, recording::Kinds<Kind...>> {
    using Result = typename Row::Result::Type;

    static Result call(typename Kind::Type... argument) {
        Replay& replay = Replay::instance();
        Parts parts{replay.handles};
        vex_notification_cb callback = nullptr;
        void* context = nullptr;
        const auto see = [&](auto kind, auto value) {
            if constexpr (std::is_same_v<decltype(kind), recording::Count>) parts.count = value;
            if constexpr (std::is_same_v<decltype(kind), recording::Callback>) callback = value;
            if constexpr (std::is_same_v<decltype(kind), recording::Context>) context = value;
        };
        (see(Kind{}, argument), ...);
        const std::vector<Value> given{observe(parts, Kind{}, argument)...};
        if constexpr ((std::is_same_v<Kind, recording::Memory> || ...)) {
            const bool known = (replay.handles.release(argument) && ...);
            if (!known)
                replay.warn("a text is released that is not out; it was released before, or is none of ours");
        }
        const auto record = replay.answer(Row::name, given, callback, context);
        if (!record) return unknown(replay, parts, given, argument...);
        size_t index = 0;
        (handBack(parts, Kind{}, argument, record->handedBack[index++]), ...);
        index = 0;
        if (record->status() == 0) (end(replay, Kind{}, given[index++]), ...);
        if constexpr (std::is_pointer_v<Result>) {
            return replay.handles.object(std::get<recording::Address>(record->result).value);
        } else if constexpr (!std::is_void_v<Result>) {
            return static_cast<Result>(record->status());
        }
    }

  private:
    template <typename One>
    static void end(Replay& replay, One, const Value& given) {
        if constexpr (kEnds<One>) {
            const uint64_t number = std::get<recording::Address>(given).value;
            if (number != 0 && !replay.handles.destroy(number)) {
                replay.warn(std::string("an object is destroyed that was destroyed before, by ") + Row::name);
            }
        }
    }

    /** Answers a call that was never made when it was recorded. */
    static Result unknown(Replay& replay, Parts& parts, const std::vector<Value>& given,
                          typename Kind::Type... argument) {
        if constexpr (std::is_same_v<Row, recording::row::vex_smlGetBatch>) {
            const auto keys = [&](uint32_t, vex_smlrequest_s* records, int32_t) {
                answerKeys(parts, records);
            };
            keys(argument...);
            return 0;
        } else if constexpr (std::is_same_v<Row, recording::row::vex_smlGet>) {
            const auto key = [&](uint32_t, auto... rest) { return answerKey(parts, rest...); };
            return key(argument...) ? 0 : static_cast<Result>(kUnknownKey);
        } else if constexpr (std::is_same_v<Row, recording::row::vex_libFreeMemory>) {
            return 0;  // no caller looks at the status
        } else if constexpr (std::is_same_v<Row, recording::row::uptime>) {
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            const long seconds =
                static_cast<long>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
            ((*argument = seconds), ...);
        } else {
            replay.warnUnrecorded(describeCall(Row::name, given));
            if constexpr (std::is_same_v<typename Row::Result, recording::Status>) return kUnknownKey;
            return {};
        }
    }
};

}  // namespace
}  // namespace vexreplay

#define VEX_REPLAY(...) VEX_DEFINE_BY(vexreplay::Replayer, __VA_ARGS__)
VEX_INTERFACE(VEX_REPLAY)

using vexreplay::Replay;

int32_t vexreplay_open(const char* path, int32_t strict, double speed, char* error, size_t size) {
    try {
        Replay::instance().open(path, {strict, speed, true});
        return 0;
    } catch (const std::exception& failure) {
        if (error != nullptr && size > 0) static_cast<void>(std::snprintf(error, size, "%s", failure.what()));
        return -1;
    }
}

int32_t vexreplay_next(uint64_t* place) {
    size_t there = 0;
    const int32_t next = Replay::instance().next(there);
    if (place != nullptr) *place = there;
    return next;
}

int32_t vexreplay_mentions(uint64_t place, const char* text) {
    return text != nullptr && Replay::instance().mentions(static_cast<size_t>(place), text) ? 1 : 0;
}

void vexreplay_deliver(void) {
    Replay::instance().deliver();
}

void vexreplay_skip(uint64_t place) {
    Replay::instance().skip(static_cast<size_t>(place));
}

void vexreplay_guard(void (*begin)(void), void (*end)(void)) {
    Replay::instance().setGuard(begin, end);
}

void vexreplay_finish(void) {
    Replay::instance().finish();
}

void vexreplay_mute(void) {
    Replay::instance().mute();
}
