#pragma once

#include <cstddef>

/**
 * What the calling thread asks of operator new, calloc and realloc while an object lives, the calls of the
 * simulated switch apart; one at a time a thread.
 */
class Allocations {
  public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /** Since the object was made. */
    size_t count() const;
    /** Of these, the blocks that were not freed. */
    size_t live() const;
    /** Has the allocation after `more` more ones fail, once: by std::bad_alloc, or by null. */
    void failAfter(size_t more);

    /** While it lives the thread's allocations are those of the test and not watched. */
    class Pause {
      public:
        Pause() : _counting(counting) { counting = false; }
        ~Pause() { counting = _counting; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

      private:
        const bool _counting;
    };

    /** Whether the calling thread's are watched. */
    inline static thread_local bool counting = false;
};
