// SPDX-License-Identifier: Zlib
// Records that stay records: what is given back is handed out again and never returned to the system. So a
// thread may lock a record that it found by a handle and only then ask whether the handle is still alive.
#pragma once

#include <new>

namespace fenlight::platform {

// Not locked: the object mutex guards it. `Record` has a member `Record *nextFree`.
template <class Record>
class RecordPool {
  public:
    // nullptr without memory.
    Record *Take() noexcept {
        if (free_ == nullptr) return new (std::nothrow) Record;
        Record *record = free_;
        free_ = record->nextFree;
        return record;
    }
    void GiveBack(Record &record) noexcept {
        record.nextFree = free_;
        free_ = &record;
    }

  private:
    Record *free_ = nullptr;
};

}  // namespace fenlight::platform
