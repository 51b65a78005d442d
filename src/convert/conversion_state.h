// Run-wide state the family conversions share between runs.
#pragma once

namespace tl {

struct ConversionState {
    // The GPS origin of the last conversion (degrees as the family gives
    // them: ddmm.mmmm for HX40, fractional degrees for the others) and the
    // copy of the one before it, kept for the track map.
    double GpsOriginLat = 0;
    double GpsOriginLong = 0;
    double PrevGpsOriginLat = 0;
    double PrevGpsOriginLong = 0;
    // True once the conversion in hand has taken its origin from a fix.
    bool OriginSet = false;
    // The per-family start values: what a conversion inherits from the one
    // before it until the store is cleared. SatScore is the running mean of
    // the squared satellite count (HX40); a run with no GPS block reports
    // the score of the run converted before it.
    double SatScore = 0;
    int LoggerSerialNumber = 0;
    int FirmwareMajor = 0;
    int FirmwareMinor = 0;
    // Clears the GPS origin pair and its previous copy.
    void ClearGpsReference() {
        GpsOriginLat = GpsOriginLong = PrevGpsOriginLat = PrevGpsOriginLong = 0;
        OriginSet = false;
    }
    // Resets the per-family start values.
    void ResetStartValues() {
        SatScore = 0;
        LoggerSerialNumber = 0;
        FirmwareMajor = FirmwareMinor = 0;
    }
    // Every conversion starts by keeping the last origin for the track map.
    void KeepPreviousOrigin() {
        PrevGpsOriginLat = GpsOriginLat;
        PrevGpsOriginLong = GpsOriginLong;
    }
    void SetOrigin(double lat, double lon) {
        OriginSet = true;
        GpsOriginLat = lat;
        GpsOriginLong = lon;
    }
};

ConversionState& Conversion();

}  // namespace tl
