/*
 * The functions of vexlib as the recorder defines them: each passes its call on to the next definition, and
 * writes a record of it. No lock is taken anywhere; what a thread needs is its own.
 */
#include "recorder/recorder.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "recorder/Line.h"
#include "recorder/RecordFile.h"
#include "recorder/put.h"
#include "recording/interface.h"

namespace vexrecord {

namespace {

// ---- Threads ----

/** What a thread keeps. Trivial, so that it is there until the thread's very end. */
struct Thread {
    Buffer buffer;
    uint64_t number; /**< 1 for the main thread, the others in the order of their first record; 0 at first */
    bool inside;     /**< in a call that is recorded: what the library calls itself is its own affair */
};

thread_local Thread currentThread;
std::atomic<uint32_t> nextThread{2};

pthread_key_t endOfThread() {
    static const pthread_key_t key = [] {
        pthread_key_t made{};
        pthread_key_create(&made, [](void* buffer) { static_cast<Buffer*>(buffer)->release(); });
        return made;
    }();
    return key;
}

Thread& thisThread() {
    Thread& thread = currentThread;
    if (thread.number != 0) return thread;
    thread.number = syscall(SYS_gettid) == getpid() ? 1 : nextThread++;
    pthread_setspecific(endOfThread(), &thread.buffer);
    return thread;
}

/** In the child of a fork, whose one thread is its main thread. */
void afterFork() {
    currentThread.number = 0;
    nextThread = 2;
    RecordFile::instance().forked();
}

/** Keeps errno as it is until its end. */
class ErrnoKeeper {
  public:
    ~ErrnoKeeper() { errno = _errno; }

  private:
    const int _errno = errno;
};

/** Sets a flag until its end. */
class Flagged {
  public:
    Flagged(bool& flag, bool value) : _flag(flag), _before(flag) { flag = value; }
    ~Flagged() { _flag = _before; }
    Flagged(const Flagged&) = delete;
    Flagged& operator=(const Flagged&) = delete;

  private:
    bool& _flag;
    const bool _before;
};

// ---- The next definitions ----

void* provider = RTLD_NEXT;  // set before the first call

template <typename Row>
std::atomic<void*> nextDefinition{nullptr};

template <typename Row>
bool findNext() {
    void* const found = dlsym(provider, Row::name);
    nextDefinition<Row> = found;
    return found != nullptr;
}

/** The next definition of a function; a process that lacks one would not have come so far without us. */
template <typename Row>
void* nextOf() {
    void* const found = nextDefinition<Row>.load(std::memory_order_acquire);
    if (found != nullptr || findNext<Row>()) return nextDefinition<Row>;
    constexpr int kStatusOfTheLinker = 127;
    static_cast<void>(std::fprintf(stderr, "libvexrecord: nothing provides %s\n", Row::name));
    _exit(kStatusOfTheLinker);
}

/** Finds them all; null, or the name of the first that is missing. */
const char* findAll() {
#define VEX_FIND(result, function, ...) \
    if (!findNext<recording::row::function>()) return #function;
    VEX_INTERFACE(VEX_FIND)
#undef VEX_FIND
    return nullptr;
}

// ---- Records ----

/** Whether this call is to be recorded. */
bool isWanted(const Thread& thread) {
    return !thread.inside && RecordFile::instance().wanted();
}

/** The record of one call or notification, from before it to after it. */
class Record {
  public:
    explicit Record(Thread& thread) : line(thread.buffer), _thread(thread) {}

    void begin() { _began = RecordFile::instance().clock(); }
    void end() { _took = RecordFile::instance().clock() - _began; }

    void write() {
        RecordFile& file = RecordFile::instance();
        const std::string_view text = line.completed(file.next(), _thread.number, _began, _took);
        if (line.whole()) {
            file.write(text);
        } else {
            file.lose();
        }
    }

    Line line;

  private:
    Thread& _thread;
    uint64_t _began = 0;
    uint64_t _took = 0;
};

// ---- Notifications ----

/** What the host registered; the library gets its address instead. Never freed: the library may keep it. */
struct Registration {
    vex_notification_cb callback;
    void* context;
    Registration* older;
};

std::atomic<Registration*> registrations{nullptr};

/** The one for this pair; null without memory. */
Registration* registrationOf(vex_notification_cb callback, void* context) {
    Registration* newest = registrations;
    for (Registration* one = newest; one != nullptr; one = one->older) {
        if (one->callback == callback && one->context == context) return one;
    }
    auto* const made = static_cast<Registration*>(std::malloc(sizeof(Registration)));
    if (made == nullptr) return nullptr;
    *made = {callback, context, newest};
    while (!registrations.compare_exchange_weak(made->older, made)) {
    }
    return made;
}

void putEvent(Line& line, const vex_event_s* event, const Registration& registration, void* user) {
    line.raw(",\"event\":");
    if (event == nullptr) {
        line.raw("null");
    } else {
        line.raw("{\"code\":");
        line.number(int64_t{event->code});
        line.raw(",\"source\":");
        putList(line, event->source.word, 3, [&](int32_t word) { line.number(int64_t{word}); });
        line.raw(",\"text\":");
        const bool masked = RecordFile::instance().masked();
        putValue(line, wholeField(event->text, masked), masked && recording::isSecretEvent(event->code));
        line.raw("}");
    }
    line.raw(",\"context\":");
    putPointer(line, registration.context);
    line.raw(",\"user\":");
    putPointer(line, user);
}

/** How often this thread has waited for something; what preempts it does not count. */
int64_t waits() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

void deliver(void* context, vex_event_s* event, void* user) {
    const Registration& registration = *static_cast<Registration*>(context);
    Thread& thread = currentThread;
    // What the host calls in its callback is recorded, also where the library delivers from inside a call.
    const Flagged outside(thread.inside, false);
    const int before = errno;
    if (!isWanted(thread) || !RecordFile::instance().open()) {
        errno = before;
        return registration.callback(registration.context, event, user);
    }
    Record record(thisThread());
    putEvent(record.line, event, registration, user);
    const int64_t waited = waits();
    record.begin();
    errno = before;
    registration.callback(registration.context, event, user);
    const ErrnoKeeper keeper;
    record.end();
    record.line.raw(",\"waited\":");
    record.line.number(waits() - waited);
    record.write();
}

// ---- Calls ----

template <typename Function, typename... Argument>
auto passOn(Function next, Argument... argument) {
    return next(argument...);
}

/** A registration: the library is given the recorder's callback in place of the host's. */
int32_t passOn(decltype(&vex_enRegisterForEventList) next, uint32_t handle, vex_notification_cb callback,
               void* context, vex_eventreg_s* list, int32_t count) {
    Registration* const registration = callback == nullptr ? nullptr : registrationOf(callback, context);
    if (registration == nullptr) return next(handle, callback, context, list, count);
    return next(handle, deliver, registration, list, count);
}

/** Writes `"name":value` for the arguments of one direction, with commas between. */
class Fields {
  public:
    explicit Fields(Line& line) : _line(line) {}
    Line& next(const char* name) {
        if (_any) _line.raw(",");
        _any = true;
        _line.name(name);
        return _line;
    }

  private:
    Line& _line;
    bool _any = false;
};

template <typename Row, typename Arguments = typename Row::Arguments>
struct Recorder;

template <typename Row, typename... Kind>
struct Recorder<Row, recording::Kinds<Kind...>> {
    using Result = typename Row::Result::Type;
    using Function = Result (*)(typename Kind::Type...);

    static Result call(typename Kind::Type... argument) {
        const int before = errno;
        const auto next = reinterpret_cast<Function>(nextOf<Row>());
        if (!isWanted(currentThread) || !RecordFile::instance().open()) {
            errno = before;
            return next(argument...);
        }
        Thread& thread = thisThread();
        const Flagged inside(thread.inside, true);
        Record record(thread);
        CallParts parts;
        parts.masked = RecordFile::instance().masked();
        putGiven(record.line, parts, argument...);
        record.begin();
        errno = before;
        if constexpr (std::is_void_v<Result>) {
            next(argument...);
            const ErrnoKeeper keeper;
            record.end();
            parts.good = true;
            finish(record, parts, argument...);
        } else {
            const Result result = passOn(next, argument...);
            const ErrnoKeeper keeper;
            record.end();
            putResult(record.line, parts, result);
            finish(record, parts, argument...);
            return result;
        }
    }

  private:
    static void putGiven(Line& line, CallParts& parts, typename Kind::Type... argument) {
        const auto see = [&](auto kind, auto value) {
            if constexpr (std::is_same_v<decltype(kind), recording::Count>) parts.count = value;
        };
        (see(Kind{}, argument), ...);
        line.raw(",\"call\":");
        line.text(Row::name);
        line.raw(",\"args\":{");
        Fields fields(line);
        const char* const* name = Row::names;
        const auto put = [&](auto kind, auto value) {
            if constexpr (decltype(kind)::in) give(fields.next(*name), parts, kind, value);
            ++name;
        };
        (put(Kind{}, argument), ...);
        line.raw("}");
    }

    template <typename Value>
    static void putResult(Line& line, CallParts& parts, Value result) {
        line.raw(",\"result\":");
        if constexpr (std::is_pointer_v<Value>) {
            putPointer(line, result);
            parts.good = true;
        } else {
            line.number(int64_t{result});
            parts.good = result == 0;
        }
    }

    static void finish(Record& record, CallParts& parts, typename Kind::Type... argument) {
        if constexpr ((Kind::back || ...)) {
            record.line.raw(",\"back\":{");
            Fields fields(record.line);
            const char* const* name = Row::names;
            const auto put = [&](auto kind, auto value) {
                if constexpr (decltype(kind)::back) handBack(fields.next(*name), parts, kind, value);
                ++name;
            };
            (put(Kind{}, argument), ...);
            record.line.raw("}");
        }
        record.write();
    }
};

/** Looks everything up while the process is still alone, as the dynamic linker's lock is a lock too. */
[[gnu::constructor]] void prepare() {
    static_cast<void>(findAll());
    static_cast<void>(RecordFile::instance());
    static_cast<void>(endOfThread());
    pthread_atfork(nullptr, nullptr, afterFork);
}

}  // namespace
}  // namespace vexrecord

#define VEX_RECORD(...) VEX_DEFINE_BY(vexrecord::Recorder, __VA_ARGS__)
VEX_INTERFACE(VEX_RECORD)

int32_t vexrecord_start(void* library, const char* path, char* error, size_t size) {
    vexrecord::provider = library;
    const char* const missing = vexrecord::findAll();
    const std::string why = missing != nullptr ? std::string("this vexlib does not provide ") + missing
                                               : vexrecord::RecordFile::instance().start(path);
    if (why.empty()) return 0;
    if (error != nullptr && size > 0) static_cast<void>(std::snprintf(error, size, "%s", why.c_str()));
    return -1;
}
