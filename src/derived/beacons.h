// Beacon matching: the rising edges of the trackside beacon receiver (slot
// 42) assigned to their place in the lap ("the third of five beacons on lap
// seven"), by comparing the distances between them with the expected section
// lengths.
//
// Beacon numbering: one numbering, 0-based, serves the table, the sections
// and the wheel-speed mapping stages. Column c (0 to NumOfBeacons - 1) of a
// table row is beacon c of that lap; sections[c] is the distance in metres
// from beacon c to beacon c + 1, and sections[NumOfBeacons - 1] runs from the
// last beacon back to beacon 0 of the next lap. The sum of sections[0] to
// sections[c - 1] is therefore the distance of beacon c from beacon 0.
#pragma once

#include <cstdint>
#include <vector>

namespace tl {

// Table(lap, beacon) of RunData rows; 0 means the beacon is absent on that
// lap. Laps are counted so that a lap's number never falls below the index
// of its first beacon in the run, so there are at most as many laps as
// beacons found, plus one.
struct BeaconTable {
    int32_t laps = 0;
    int32_t beacons = 0;
    std::vector<int32_t> rows;  // laps * beacons, lap major

    void Size(int32_t lapCount, int32_t beaconCount);
    void Clear() { Size(0, 0); }
    bool Empty() const { return laps == 0 || beacons == 0; }
    // 0 outside the table.
    int32_t At(int32_t lap, int32_t beacon) const;
    // Grows the table by whole laps when lap lies beyond it; ignores a
    // negative lap or a beacon outside 0 to beacons - 1.
    void Set(int32_t lap, int32_t beacon, int32_t row);
};

// True when b lies strictly between 0.97 a - 20 and 1.03 a + 20 (metres).
bool TestLapDistance(float a, float b);

// The run's beacon rows: rising edges of slot 42 (a row at 1 after a row that
// isn't), from RunStart + 1, at most NumOfBeacons * 500 of them.
std::vector<int32_t> FindBeaconRows(int32_t run);

// Finds the best alignment of the distances between the run's beacons with
// the expected sections and writes the beacon table. With useGiven, sections
// holds the reference lap's sections (RefSections), is only read, and every
// gap of the run is compared with them; without it the expected lengths come
// from the run's own beacons, one lap of gaps from each start in turn, and
// sections receives the lengths of the best start. Fewer than three beacons
// give an empty table. Returns the error of the best start (-1 when none was
// searched).
int ExtractValidMarkers(int32_t run, BeaconTable& table, std::vector<float>& sections,
                        bool useGiven);

// Writes the table from the run's beacons and one lap of section lengths
// (sections[0] to sections[NumOfBeacons - 1]); start is the best start found
// by the search (the table itself synchronises on sections[0]).
void BuildBeaconTable(BeaconTable& table, int32_t start, const std::vector<float>& sections,
                      int32_t run);

}  // namespace tl
