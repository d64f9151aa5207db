// SPDX-License-Identifier: Zlib
#include "platform/system/handle_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace fenlight::platform {
namespace {

std::atomic<int> liveObjects{0};

struct Marked : HandleObject {
    explicit Marked(uint64_t number) : mark(number) { ++liveObjects; }
    ~Marked() override {
        mark = 0;
        --liveObjects;
    }
    uint64_t mark;
};

using PinnedPen = Pinned<Marked, HandleKind::Pen>;

TEST(HandleTable, KnowsOnlyLiveHandlesOfTheRightKind) {
    const uintptr_t pen = InsertHandle(HandleKind::Pen, new Marked(7));
    const uintptr_t brush = InsertHandle(HandleKind::Brush, new Marked(8));
    EXPECT_EQ(PinnedPen(pen)->mark, 7u);
    EXPECT_FALSE(PinnedPen(brush)) << "a brush is no pen";
    EXPECT_FALSE(RemoveHandle(HandleKind::Pen, brush));
    for (const uintptr_t foreign : {uintptr_t{0}, uintptr_t{1}, uintptr_t{2}, uintptr_t{3}, pen - 1, pen + 1,
                                    pen | uintptr_t{1} << 31, pen | uintptr_t{1} << 40, ~uintptr_t{0}}) {
        EXPECT_FALSE(PinnedPen(foreign)) << std::hex << foreign;
        EXPECT_FALSE(RemoveHandle(HandleKind::Pen, foreign)) << std::hex << foreign;
        EXPECT_EQ(KindOfHandle(foreign), HandleKind::None) << std::hex << foreign;
    }
    std::mt19937_64 random(4711);
    for (int i = 0; i < 200'000; ++i) {
        const uintptr_t number = random() >> (random() % 64);
        if (number == pen || number == brush) continue;
        EXPECT_EQ(KindOfHandle(number), HandleKind::None) << number;
    }
    EXPECT_TRUE(RemoveHandle(HandleKind::Pen, pen));
    EXPECT_FALSE(RemoveHandle(HandleKind::Pen, pen));
    const uintptr_t next = InsertHandle(HandleKind::Pen, new Marked(9));
    EXPECT_FALSE(PinnedPen(pen)) << "the slot is in use again, the old handle stays dead";
    EXPECT_TRUE(RemoveHandle(HandleKind::Pen, next));
    EXPECT_TRUE(RemoveHandle(HandleKind::Brush, brush));
    EXPECT_EQ(liveObjects, 0);
}

TEST(HandleTable, APinKeepsTheObjectButNotTheHandle) {
    const uintptr_t pen = InsertHandle(HandleKind::Pen, new Marked(5));
    {
        const PinnedPen first(pen);
        PinnedPen second(pen);
        const PinnedPen moved(std::move(second));
        ASSERT_TRUE(RemoveHandle(HandleKind::Pen, pen));
        EXPECT_FALSE(PinnedPen(pen));
        EXPECT_EQ(first->mark, 5u);
        EXPECT_EQ(moved->mark, 5u);
        EXPECT_EQ(liveObjects, 1);
    }
    EXPECT_EQ(liveObjects, 0);
}

TEST(HandleTable, GivesZeroWhenFullAndGoesOnAfterwards) {
    const int before = CountHandles(HandleKind::Brush);
    std::vector<uintptr_t> handles;
    std::set<uintptr_t> different;
    for (;;) {
        const uintptr_t handle = InsertHandle(HandleKind::Brush, new Marked(1));
        if (handle == 0) break;
        ASSERT_LE(handle, 0x7FFFFFFFu);
        handles.push_back(handle);
        different.insert(handle);
    }
    EXPECT_GT(handles.size(), 65'000u);
    EXPECT_LE(handles.size(), 65'535u);
    EXPECT_EQ(different.size(), handles.size());
    EXPECT_EQ(CountHandles(HandleKind::Brush), before + static_cast<int>(handles.size()));
    EXPECT_EQ(liveObjects, static_cast<int>(handles.size())) << "the object that found no place is gone";
    ASSERT_TRUE(RemoveHandle(HandleKind::Brush, handles.back()));
    handles.back() = InsertHandle(HandleKind::Brush, new Marked(2));
    EXPECT_NE(handles.back(), 0u);
    for (const uintptr_t handle : handles) EXPECT_TRUE(RemoveHandle(HandleKind::Brush, handle));
    EXPECT_EQ(liveObjects, 0);
}

// A program that makes and deletes objects all day must not bring an old number back to life soon: a slot on
// its own would have run through its generations many times in this.
TEST(HandleTable, AStaleHandleStaysDeadThroughAMillionNewOnes) {
    const uintptr_t stale = InsertHandle(HandleKind::Pen, new Marked(1));
    ASSERT_TRUE(RemoveHandle(HandleKind::Pen, stale));
    for (int i = 0; i < 1'000'000; ++i) {
        const uintptr_t fresh = InsertHandle(HandleKind::Pen, new Marked(2));
        ASSERT_NE(fresh, stale) << "after " << i;
        ASSERT_TRUE(RemoveHandle(HandleKind::Pen, fresh));
    }
}

// Every thread makes, looks up and deletes objects in places that all share. An object's mark must be the one
// that was stored with its handle, whoever deletes it in between.
TEST(HandleTable, ManyThreadsNeverSeeAForeignOrDeadObject) {
    struct Place {
        std::atomic<uintptr_t> handle{0};
    };
    std::vector<Place> places(8);
    std::atomic<uint64_t> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed) {
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            for (int turn = 0; turn < 20'000; ++turn) {
                const size_t index = random() % places.size();
                const uintptr_t known = places[index].handle;
                if (const PinnedPen pinned(known); pinned && pinned->mark != index + 1) ++wrong;
                if (random() % 2 == 0) continue;
                const uintptr_t made = InsertHandle(HandleKind::Pen, new Marked(index + 1));
                const uintptr_t old = places[index].handle.exchange(made);
                if (old != 0 && !RemoveHandle(HandleKind::Pen, old)) ++wrong;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    for (Place &place : places) RemoveHandle(HandleKind::Pen, place.handle);
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(liveObjects, 0);
}

}  // namespace
}  // namespace fenlight::platform
