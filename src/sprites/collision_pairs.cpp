// SPDX-License-Identifier: Zlib
// The search for all meeting pairs of the list.
//
// Each axis is cut into slabs. For each slab there is a row of bits, one for each sprite in the list's order,
// that tells which sprites begin in this slab or before it, and another that tells which end in it or behind
// it. The sprites that can meet one of them are then what four rows have in common: those that begin before
// it ends and end behind where it begins, on both axes. They come in the list's order by themselves, and how
// large they are makes no difference.
#include <algorithm>
#include <bit>

#include "fenlight/platform/system.h"
#include "sprites/collision.h"
#include "sprites/collision_kernels.h"
#include "sprites/frame_order.h"
#include "sprites/sprite_list.h"

namespace fenlight {

namespace {

// Slabs on each axis. With more of them their rows leave the first-level cache, with fewer more sprites have
// to be compared that do not meet.
constexpr size_t kSlabs = 128;
// Below it, comparing each with each is done sooner.
constexpr size_t kFewSprites = 24;
constexpr size_t kSamples = 32;
// Sets of more near sprites are compared whole.
constexpr int kFewNear = 8;
constexpr size_t kVectorBytes = 64;

class PairWriter {
  public:
    explicit PairWriter(uintptr_t *pairs) noexcept : pairs_(pairs), next_(pairs) {}
    void Write(uintptr_t earlier, uintptr_t later) noexcept {
        next_[0] = earlier;
        next_[1] = later;
        next_ += 2;
    }
    size_t Count() const noexcept { return static_cast<size_t>(next_ - pairs_) / 2; }

  private:
    uintptr_t *pairs_, *next_;
};

bool TakesPart(const SpriteRecord &record) noexcept {
    return record.FixMode == 0 && record.State == kStateAlive;
}

// Slabs of equal width between two usual places; what lies further out belongs to the outermost slabs, so
// that a sprite that is parked far away does not make them wide.
class Scale {
  public:
    Scale(const int32_t *edges, size_t count) noexcept {
        int32_t places[kSamples];
        for (size_t i = 0; i < kSamples; ++i) places[i] = edges[i * count / kSamples];
        std::sort(places, places + kSamples);
        lowest_ = places[1];
        const auto span = static_cast<uint32_t>(places[kSamples - 2]) - static_cast<uint32_t>(lowest_);
        shift_ = std::max(0, static_cast<int>(std::bit_width(span)) - std::countr_zero(kSlabs));
        const int64_t end = lowest_ + (static_cast<int64_t>(kSlabs) << shift_);
        highest_ = static_cast<int32_t>(std::min<int64_t>(end - 1, INT32_MAX));
    }

    // Grows with the place, or stays: nothing else is asked of it.
    uint8_t SlabOf(int32_t place) const noexcept {
        const int32_t inside = std::min(std::max(place, lowest_), highest_);
        return static_cast<uint8_t>((static_cast<uint32_t>(inside) - static_cast<uint32_t>(lowest_)) >>
                                    shift_);
    }

  private:
    int32_t lowest_, highest_;
    int shift_;
};

void SetBit(uint64_t *rows, size_t words, size_t slab, size_t sprite) noexcept {
    rows[slab * words + sprite / 64] |= uint64_t{1} << sprite % 64;
}

// Parts of a block, one behind the other.
class Divider {
  public:
    explicit Divider(void *block) noexcept : next_(reinterpret_cast<uintptr_t>(block)) {}
    template <class Value>
    void Take(Value *&part, size_t count) noexcept {
        part = reinterpret_cast<Value *>(next_);
        next_ += (count * sizeof(Value) + kVectorBytes - 1) & ~(kVectorBytes - 1);
    }
    size_t Taken() const noexcept { return next_; }

  private:
    uintptr_t next_;
};

// The sprites that take part, in the list's order, and the memory for all of the search.
class Contenders {
  public:
    explicit Contenders(size_t most) noexcept : words_((most + 511) / 512 * kWordsAtOnce) {
        Divider measure(nullptr);
        Divide(measure);
        block_ = GlobalAlloc(GMEM_FIXED, measure.Taken() + kVectorBytes);
        const uintptr_t start = reinterpret_cast<uintptr_t>(block_) + kVectorBytes - 1;
        Divider divider(reinterpret_cast<void *>(start & ~(kVectorBytes - 1)));
        Divide(divider);
    }
    Contenders(const Contenders &) = delete;
    Contenders &operator=(const Contenders &) = delete;
    ~Contenders() { GlobalFree(block_); }

    explicit operator bool() const noexcept { return block_ != nullptr; }

    void Gather(SpriteRecord &first) noexcept {
        WalkList(first, PrefetchBox, [this](const SpriteRecord &record) {
            if (TakesPart(record)) Add(record);
            return true;
        });
    }

    void FindPairs(PairWriter &writer) const noexcept;
    void FindFilteredPairs(const PairFilter &filter, PairWriter &writer) const noexcept;

  private:
    size_t words_, count_ = 0;
    void *block_;
    SlabRows rows_{};
    EdgeSlabs *slabs_ = nullptr;
    NearSets near_{};
    BoxArrays boxes_{};
    uintptr_t *sprites_ = nullptr;

    void Divide(Divider &divider) noexcept {
        const size_t sprites = 64 * words_;
        rows_.words = words_;
        for (uint64_t **rows : {&rows_.lefts, &rows_.tops, &rows_.rights, &rows_.bottoms})
            divider.Take(*rows, kSlabs * words_);
        divider.Take(slabs_, sprites);
        divider.Take(near_.bits, NearCapacity());
        divider.Take(near_.places, NearCapacity());
        for (int32_t **edges : {&boxes_.lefts, &boxes_.tops, &boxes_.rights, &boxes_.bottoms})
            divider.Take(*edges, sprites);
        divider.Take(sprites_, sprites);
    }
    size_t NearCapacity() const noexcept { return 512 + words_ + kWordsAtOnce; }

    void Add(const SpriteRecord &record) noexcept {
        const SpriteBox box = BoxOf(record);
        boxes_.lefts[count_] = box.left;
        boxes_.tops[count_] = box.top;
        boxes_.rights[count_] = box.right;
        boxes_.bottoms[count_] = box.bottom;
        sprites_[count_++] = HandleOf(&record);
    }
    SpriteBox Box(size_t i) const noexcept {
        return {boxes_.lefts[i], boxes_.tops[i], boxes_.rights[i], boxes_.bottoms[i]};
    }
    void WriteIfMeeting(size_t i, size_t j, PairWriter &writer) const noexcept {
        if (DoMeet(Box(i), Box(j))) writer.Write(sprites_[i], sprites_[j]);
    }

    void FillRows(const CollisionKernels &kernels) const noexcept;
    uint64_t KeepMeeting(const CollisionKernels &kernels, uint64_t bits, uint64_t place) const noexcept;
    void WriteMeeting(const CollisionKernels &kernels, size_t sets, PairWriter &writer) const noexcept;
};

void Contenders::FillRows(const CollisionKernels &kernels) const noexcept {
    const Scale across(boxes_.lefts, count_), down(boxes_.tops, count_);
    for (size_t i = 0; i < count_; ++i)
        slabs_[i] = {across.SlabOf(boxes_.lefts[i]), down.SlabOf(boxes_.tops[i]),
                     across.SlabOf(boxes_.rights[i]), down.SlabOf(boxes_.bottoms[i])};
    for (uint64_t *rows : {rows_.lefts, rows_.tops, rows_.rights, rows_.bottoms})
        std::fill_n(rows, kSlabs * words_, uint64_t{0});
    for (size_t i = 0; i < count_; ++i) {
        SetBit(rows_.lefts, words_, slabs_[i].left, i);
        SetBit(rows_.tops, words_, slabs_[i].top, i);
        SetBit(rows_.rights, words_, slabs_[i].right, i);
        SetBit(rows_.bottoms, words_, slabs_[i].bottom, i);
    }
    const auto step = static_cast<ptrdiff_t>(words_);
    for (uint64_t *rows : {rows_.lefts, rows_.tops}) kernels.spreadBits(rows, step, kSlabs, words_);
    for (uint64_t *rows : {rows_.rights, rows_.bottoms})
        kernels.spreadBits(rows + (kSlabs - 1) * words_, -step, kSlabs, words_);
}

// What of a set of near sprites meets the sprite indeed.
uint64_t Contenders::KeepMeeting(const CollisionKernels &kernels, uint64_t bits,
                                 uint64_t place) const noexcept {
    const size_t sprite = place >> 32, first = (place & 0xFFFFFFFF) * 64;
    if (std::popcount(bits) > kFewNear) return bits & kernels.findMeeting(boxes_, sprite, first);
    const SpriteBox box = Box(sprite);
    uint64_t meeting = 0;
    for (; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<size_t>(std::countr_zero(bits));
        meeting |= static_cast<uint64_t>(DoMeet(box, Box(first + bit))) << bit;
    }
    return meeting;
}

void Contenders::WriteMeeting(const CollisionKernels &kernels, size_t sets,
                              PairWriter &writer) const noexcept {
    size_t count = 0;
    for (size_t i = 0; i < sets; ++i) {
        near_.bits[count] = KeepMeeting(kernels, near_.bits[i], near_.places[i]);
        near_.places[count] = near_.places[i];
        count += near_.bits[count] != 0;
    }
    for (size_t i = 0; i < count; ++i) {
        const uintptr_t sprite = sprites_[near_.places[i] >> 32];
        const uintptr_t *others = sprites_ + (near_.places[i] & 0xFFFFFFFF) * 64;
        for (uint64_t bits = near_.bits[i]; bits != 0; bits &= bits - 1)
            writer.Write(sprite, others[std::countr_zero(bits)]);
    }
}

void Contenders::FindPairs(PairWriter &writer) const noexcept {
    if (count_ < kFewSprites) {
        for (size_t i = 0; i < count_; ++i)
            for (size_t j = i + 1; j < count_; ++j) WriteIfMeeting(i, j, writer);
        return;
    }
    const CollisionKernels &kernels = ChooseCollisionKernels();
    FillRows(kernels);
    size_t sets = 0;
    for (size_t i = 0; i < count_; ++i) {
        sets += kernels.findNear(rows_, slabs_[i], i, {near_.bits + sets, near_.places + sets});
        if (sets + words_ + kWordsAtOnce <= NearCapacity()) continue;
        WriteMeeting(kernels, sets, writer);
        sets = 0;
    }
    WriteMeeting(kernels, sets, writer);
}

// Without memory.
void FindPairsInList(SpriteRecord &first, const PairFilter &filter, PairWriter &writer) noexcept {
    const bool takesAll = filter.sprites[3] == 0;
    for (const SpriteRecord *a = &first; a != nullptr; a = NextOf(*a)) {
        if (!TakesPart(*a)) continue;
        const bool isChosen = takesAll || filter.Holds(HandleOf(a));
        for (const SpriteRecord *b = NextOf(*a); b != nullptr; b = NextOf(*b))
            if (TakesPart(*b) && DoMeet(BoxOf(*a), BoxOf(*b)) && (isChosen || filter.Holds(HandleOf(b))))
                writer.Write(HandleOf(a), HandleOf(b));
    }
}

// A sprite that is not chosen is compared with the few chosen ones behind it.
void Contenders::FindFilteredPairs(const PairFilter &filter, PairWriter &writer) const noexcept {
    size_t chosen[4], chosenCount = 0;
    for (size_t i = 0; i < count_; ++i)
        if (filter.Holds(sprites_[i])) chosen[chosenCount++] = i;
    for (size_t i = 0; i < count_; ++i) {
        if (filter.Holds(sprites_[i])) {
            for (size_t j = i + 1; j < count_; ++j) WriteIfMeeting(i, j, writer);
            continue;
        }
        for (size_t k = 0; k < chosenCount; ++k)
            if (chosen[k] > i) WriteIfMeeting(i, chosen[k], writer);
    }
}

}  // namespace

size_t FindMeetingPairs(const PairFilter &filter, uintptr_t *pairs) noexcept {
    PairWriter writer(pairs);
    std::unique_lock hold(SpriteListLock);
    SpriteRecord *first = SpriteList.load(std::memory_order_relaxed);
    if (first == nullptr) return 0;
    Contenders contenders(CountFrameOrder());
    if (!contenders) {
        FindPairsInList(*first, filter, writer);
        return writer.Count();
    }
    contenders.Gather(*first);
    hold.unlock();
    if (filter.sprites[3] == 0)
        contenders.FindPairs(writer);
    else
        contenders.FindFilteredPairs(filter, writer);
    return writer.Count();
}

}  // namespace fenlight
