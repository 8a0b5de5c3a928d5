#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "common/AccessLock.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningDraft.h"
#include "zoning/ZoningOutcome.h"

namespace datacache {

/** What is behind a ZoningSession. */
class ZoningSessionState {
  public:
    /** `shared` may be null for a session that is never opened. */
    ZoningSessionState(ZoningCache* shared, std::string_view client, void (*refresh)())
        : _shared(shared), _client(client), _refresh(refresh) {}
    ~ZoningSessionState();
    ZoningSessionState(const ZoningSessionState&) = delete;
    ZoningSessionState& operator=(const ZoningSessionState&) = delete;

    ZoningOutcome open() noexcept DC_REQUIRES(access_lock);
    bool isOpen() const DC_REQUIRES(access_lock) { return _draft.has_value(); }
    long secondsLeft() const DC_REQUIRES(access_lock);
    /** Carries out an edit, which is given the operands as texts for the switch library. */
    using Edit = std::function<ZoningReport(ZoningEdits, const char*, const char*)>;
    ZoningOutcome edit(std::initializer_list<std::string_view> words, std::string_view first,
                       std::string_view second, const Edit& edit) noexcept DC_REQUIRES(access_lock);
    ZoningOutcome check() noexcept DC_REQUIRES(access_lock);
    ZoningOutcome commit() noexcept DC_REQUIRES(access_lock);
    ZoningOutcome abandon() noexcept DC_REQUIRES(access_lock);

    static ZoningOutcome outcome(std::initializer_list<std::string_view> words, ZoningReport report,
                                 std::vector<ZoningBrought> brought = {}) noexcept;

    ZoningOutcome lockOutcome DC_GUARDED_BY(access_lock);

  private:
    /** What the switch has of a group that it did not carry out whole. */
    enum class Saved { Nothing, Part, All, Unknown };
    enum class Held { No, Yes, Unknown };

    /** Every step runs in here: `carryOut` gives its report. */
    template <typename CarryOut>
    ZoningOutcome _step(std::initializer_list<std::string_view> words, std::vector<ZoningBrought>* brought,
                        CarryOut carryOut) noexcept DC_REQUIRES(access_lock);
    ZoningReport _begin() DC_REQUIRES(access_lock);
    /** Why the session can neither edit nor commit, if so. */
    ZoningReport _obstacle() DC_REQUIRES(access_lock);
    /** All that can be said of a commit without asking the switch. */
    ZoningReport _prepare(CommandGroup& group, std::vector<ZoningBrought>& brought) DC_REQUIRES(access_lock);
    ZoningReport _send(CommandGroup& group) DC_REQUIRES(access_lock);
    Saved _whatIsSaved(const CommandGroup& group) DC_REQUIRES(access_lock);
    /** Closes the session, with what it still holds given back; false, with the reason, where that was
     * refused. */
    bool _close(Held lock, Held rights, ZoningFailure& failure) DC_REQUIRES(access_lock);

    ZoningCache* const _shared;
    const std::string _client;
    void (*const _refresh)();
    /** Made before the lock is taken, so that it can always be given back. */
    CommandGroup _lockCommands{4, CommandGroup::kUnanswered};
    std::optional<ZoningDraft> _draft DC_GUARDED_BY(access_lock);  ///< none when the session is closed
    bool _damaged DC_GUARDED_BY(access_lock) = false;
};

}  // namespace datacache
