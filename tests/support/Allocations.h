#pragma once

#include <cstddef>

/** What the calling thread asks of operator new while an object lives; one at a time a thread. */
class Allocations {
  public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /** Since the object was made. */
    size_t count() const;
    /** Has the allocation after `more` more ones throw std::bad_alloc, once. */
    void failAfter(size_t more);
};
