/* SPDX-License-Identifier: Zlib */
/* Ground is made of tiles of 32 x 32. The kind of ground is decided for the corners between the tiles, and a
 * tile is named by the kinds of its four corners, so that shores and roadsides join. Trees and houses are
 * tiles of 64 x 64 that let the ground show through. */
#include "showcase_world.h"

#include <fenlight/fenlight.h>

enum { kTile = 32, kColumns = 50, kRows = 38, kThing = 64, kThingColumns = 25, kThingRows = 19 };
enum { kGrass, kPath, kWater };
enum { kFirstPathTile = 4, kFirstWaterTile = 19 }; /* of the corners 1, 2, 3 ... 15 */
enum { kOak, kAutumnOak, kPine, kBush, kRock, kRedHouse, kBlueHouse, kBridge, kNothing = 255 };

int16_t Road[2 * kRoadPoints];

static uint8_t ground[kRows * kColumns], things[2][kThingRows * kThingColumns];

/* The same country at each start: a number from 0 to 99 for each place. */
static int Chance(int x, int y) {
    uint32_t number = (uint32_t)x * 374761393u + (uint32_t)y * 668265263u;
    number = (number ^ (number >> 13)) * 1274126177u;
    return (int)((number ^ (number >> 16)) % 100);
}

/* A smooth closed curve through a few places. */
static void LayRoad(void) {
    static const int16_t places[][2] = {{160, 200},   {420, 140},   {700, 200},  {840, 400},
                                        {840, 620},   {960, 760},   {1280, 760}, {1470, 880},
                                        {1400, 1060}, {1160, 1090}, {960, 1070}, {720, 1050},
                                        {480, 1100},  {180, 1080},  {100, 820},  {120, 480}};
    for (int i = 0; i < kRoadPoints; ++i) {
        const int place = i / 16;
        const float t = (float)(i % 16) / 16.0f;
        for (int axis = 0; axis < 2; ++axis) {
            const float a = places[(place + 15) % 16][axis], b = places[place][axis];
            const float c = places[(place + 1) % 16][axis], d = places[(place + 2) % 16][axis];
            const float bend = 2 * a - 5 * b + 4 * c - d + (3 * (b - c) + d - a) * t;
            Road[2 * i + axis] = (int16_t)(b + t * (c - a + t * bend) / 2);
        }
    }
}

static int IsInEllipse(int x, int y, int centreX, int centreY, int radiusX, int radiusY) {
    const float u = (float)(x - centreX) / (float)radiusX, v = (float)(y - centreY) / (float)radiusY;
    return u * u + v * v < 1;
}

static int IsOnRoad(int x, int y) {
    if (x > 120 && x < 840 && y > 448 && y < 512) return 1; /* the village street */
    for (int i = 0; i < kRoadPoints; ++i) {
        const int distanceX = x - Road[2 * i], distanceY = y - Road[2 * i + 1];
        if (distanceX * distanceX + distanceY * distanceY < 28 * 28) return 1;
    }
    return 0;
}

static int KindAt(int x, int y) {
    const int river = 1120 + (y % 240 < 120 ? y % 120 : 120 - y % 120) / 3;
    if (IsInEllipse(x, y, 1180, 370, 270, 180) || IsInEllipse(x, y, 380, 850, 170, 115)) return kWater;
    if (y > 500 && x > river - 40 && x < river + 40) return kWater;
    return IsOnRoad(x, y) ? kPath : kGrass;
}

static uint8_t GroundTile(int column, int row) {
    int corners[3] = {0, 0, 0}; /* of each kind */
    for (int i = 0; i < 4; ++i) corners[KindAt((column + i % 2) * kTile, (row + i / 2) * kTile)] |= 1 << i;
    if (corners[kWater]) return (uint8_t)(kFirstWaterTile + corners[kWater] - 1);
    if (corners[kPath]) return (uint8_t)(kFirstPathTile + corners[kPath] - 1);
    const int chance = Chance(column, row);
    return (uint8_t)(chance < 8 ? 2 : chance < 11 ? 3 : chance % 2);
}

/* Nothing grows on roads, in water, in the village and in the garden to its north. */
static uint8_t Growth(int x, int y) {
    static const uint8_t kinds[] = {kOak, kPine, kOak, kBush, kAutumnOak, kPine, kRock, kOak};
    for (int i = 0; i < 9; ++i)
        if (KindAt(x + 8 + i % 3 * 24, y + 6 + i / 3 * 26) != kGrass) return kNothing;
    if (x > 190 && x < 760 && y > (x < 440 ? 300 : 180) && y < 720) return kNothing;
    const int isForest = x < 140 || y < 100 || x > 1360 || (x > 560 && x < 1000 && y > 620);
    return Chance(x, y) < (isForest ? 62 : 18) ? kinds[Chance(y, x) % 8] : kNothing;
}

static void PlanWorld(void) {
    LayRoad();
    for (int i = 0; i < kRows * kColumns; ++i) ground[i] = GroundTile(i % kColumns, i / kColumns);
    for (int layer = 0; layer < 2; ++layer)
        for (int i = 0; i < kThingRows * kThingColumns; ++i)
            things[layer][i] =
                Growth(i % kThingColumns * kThing + 32 * layer, i / kThingColumns * kThing + 32 * layer);
    for (int column = 4; column <= 10; column += 2) {
        things[0][6 * kThingColumns + column] = column % 4 ? kBlueHouse : kRedHouse;
        if (column != 8) things[0][8 * kThingColumns + column + 1] = column % 4 ? kRedHouse : kBlueHouse;
    }
}

void PaintWorld(HDC target, uintptr_t groundTiles, uintptr_t thingTiles) {
    static const uint8_t bridge[] = {kBridge, kBridge, kBridge};
    static const uint16_t listed[] = {kOak, kAutumnOak, kPine, kBush, kRock, kRedHouse, kBlueHouse, 1111};
    PlanWorld();
    SetTiles(groundTiles, 0, kColumns, kRows, kTile, kTile, ground, kColumns, 0, 0, target, 0, 0, 0, 0);
    SetTiles(thingTiles, 0, 3, 1, kThing, kThing, bridge, 3, 0, 0, target, 1040, 728, -1, 0);
    SetTiles(thingTiles, 0, 3, 1, kThing, kThing, bridge, 3, 0, 0, target, 1040, 1058, -1, 0);
    /* Row by row, so that what stands further down covers what stands behind it. Two maps, half a tile apart.
     */
    for (int row = 0; row < kThingRows; ++row)
        for (int layer = 0; layer < 2; ++layer)
            SetTiles(thingTiles, 0, kThingColumns, 1, kThing, kThing, things[layer], kThingColumns, 0, row,
                     target, 32 * layer, kThing * row + 32 * layer, -1, listed);
}
