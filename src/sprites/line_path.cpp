// SPDX-License-Identifier: Zlib
#include "sprites/line_path.h"

#include <algorithm>
#include <mutex>

namespace fenlight {

namespace {

// Guards Path of every record against halves of two paths in one. The innermost lock: taken under
// SpriteListLock too, and none is taken under it.
std::mutex pathLock;

PathPoints LoadPath(const SpriteRecord &record) {
    PathPoints path;
    for (size_t place = 0; place < path.size(); ++place)
        path[place] = {record.Path[2 * place], record.Path[2 * place + 1]};
    return path;
}

void StorePath(SpriteRecord &record, const PathPoints &path) {
    for (size_t place = 0; place < path.size(); ++place) {
        record.Path[2 * place] = path[place].x;
        record.Path[2 * place + 1] = path[place].y;
    }
}

// One coordinate of a line: how far it has to go, and in which direction.
struct Axis {
    int64_t distance;
    int32_t step;
};

// Distances need 64 bits: the two ends may be 2^32 - 1 apart.
Axis AxisBetween(int32_t from, int32_t to) {
    if (from <= to) return {int64_t{to} - from, 1};
    return {int64_t{from} - to, -1};
}

}  // namespace

PathPoints MakeLinePath(PathPoint from, PathPoint to) noexcept {
    PathPoints path;
    if (from == to) return path;
    const Axis x = AxisBetween(from.x, to.x);
    const Axis y = AxisBetween(from.y, to.y);
    const bool isSteep = y.distance > x.distance;
    const Axis main = isSteep ? y : x;
    const Axis minor = isSteep ? x : y;

    PathPoint point = from;
    int32_t &mainPosition = isSteep ? point.y : point.x;
    int32_t &minorPosition = isSteep ? point.x : point.y;
    const int32_t mainTarget = isSteep ? to.y : to.x;
    int64_t error = 2 * minor.distance - main.distance;
    path[0] = from;
    for (size_t place = 1; place < path.size() && mainPosition != mainTarget; ++place) {
        mainPosition += main.step;
        if (error >= 0) {
            minorPosition += minor.step;
            error -= 2 * main.distance;
        }
        error += 2 * minor.distance;
        path[place] = point;
    }
    return path;
}

void StartMovingMode(SpriteRecord &record, int32_t mode) noexcept {
    {
        const std::scoped_lock hold(pathLock);
        StorePath(record, PathPoints{});
    }
    record.MovingMode = mode;
}

void CopyLinePath(const SpriteRecord &from, SpriteRecord &to) noexcept {
    const std::scoped_lock hold(pathLock);
    StorePath(to, LoadPath(from));
}

void MoveAlongLine(SpriteRecord &record) noexcept {
    const std::scoped_lock hold(pathLock);
    const int32_t speed = record.SpeedX;
    const PathPoint target{record.TargetX, record.TargetY};
    PathPoints path = LoadPath(record);
    const auto filled = std::count_if(path.begin(), path.end(), [](PathPoint p) { return !p.IsFree(); });
    if (filled < speed) path = MakeLinePath({record.X, record.Y}, target);

    // A speed below 1 is never reached by the counter: such a sprite runs to the end of what it has.
    for (int32_t taken = 1; !path[0].IsFree(); ++taken) {
        const PathPoint point = path[0];
        record.X = point.x;
        record.Y = point.y;
        if (point == target) {
            path.fill({});
            break;
        }
        std::shift_left(path.begin(), path.end(), 1);
        path.back() = {};
        if (taken == speed) break;
    }
    StorePath(record, path);
}

}  // namespace fenlight
