#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recording/Reader.h"

namespace vexreplay {

/** The answer of the switch for one key. */
struct KeyAnswer {
    std::string value;
    uint32_t status;
};

/**
 * The index of a recording that is replayed. A line is parsed again each time its record is asked for. The
 * file and its index together take less memory than twice the size of the file.
 *
 * In the records, ObjectNumbers take the place of addresses.
 */
class Script {
  public:
    static constexpr uint32_t kNone = UINT32_MAX;

    /**
     * `locked`: callbacks wait for a lock that a thread holds while it calls, so that a notification's place
     * is where its callback had the lock: where it ended if it waited, and where it began if it did not.
     * Otherwise its place is where it began. Throws recording::RecordingError.
     */
    Script(const std::string& path, bool locked);

    /** A call or a notification. */
    struct Step {
        uint64_t begin; /**< ns since the recording began */
        uint64_t end;
        uint64_t call;   /**< numberOfText(describeCall()); 0 for a notification */
        uint64_t origin; /**< originOf(); 0 for a call without objects */
        uint64_t offset;
        uint32_t line;
        uint32_t thread;
        uint32_t objects; /**< a call: where its objects begin; a notification: the step that registered it */
        uint32_t inside;  /**< a notification: the call of its own thread inside which it came, or kNone */
        bool waited;      /**< a notification: its callback waited */
        bool connects;    /**< vex_IPConnect */
        bool failed;      /**< a call with a status that is not 0 */

        bool isNotification() const { return call == 0; }
    };

    const std::string& path() const { return _reader.path(); }
    std::vector<std::string> remarks() const { return _reader.remarks(); }
    /** "FILE:LINE: where it was cut"; empty for a recording that was not. */
    const std::string& cut() const { return _reader.cut(); }

    /** In the order in which they are replayed: calls where they began. */
    const std::vector<Step>& steps() const { return _steps; }
    /** The step's record, with numbers in place of addresses. */
    recording::Record record(size_t place) const;
    /** describeCall() of a step. */
    std::string describe(size_t place) const;
    /** "FILE:LINE" of a step. */
    std::string where(size_t place) const;

    using Place = std::pair<uint64_t, uint32_t>;
    /** A range of places, in order. */
    struct Places {
        const Place* first;
        const Place* last;
        bool empty() const { return first == last; }
        /** The first from `place` on; `last` for none. */
        const Place* from(size_t place) const;
    };
    /** Where the steps with this call are. */
    Places places(uint64_t call) const;
    /** Where the steps are that make this call of objects of the same origin. */
    Places similar(const char* function, const std::vector<recording::Value>& given) const;

    /** The last answer for a key before `place`, or else the first behind it; none for a key that was never
     * read. */
    std::optional<KeyAnswer> answer(const std::string& key, size_t place) const;

  private:
    struct Making;
    struct KeyPlace {
        uint64_t key;
        uint32_t place;
        uint32_t entry; /**< of the batch; kNone for a text that was handed out */
        bool operator<(const KeyPlace& other) const;
    };
    void addKeys(const recording::Record& record);
    void putInOrder(bool locked);

    recording::Reader _reader;
    std::vector<Step> _steps;
    std::vector<uint32_t> _objects;
    std::vector<uint64_t> _origins; /**< of the objects, by their numbers */
    std::vector<Place> _byCall;
    std::vector<Place> _byOrigin;
    std::vector<KeyPlace> _keys;
};

}  // namespace vexreplay
