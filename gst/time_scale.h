#pragma once

#include <cstdint>

#include <gst/gst.h>

namespace korvalin::gst {

// The stream times of a film played faster: every `rate` 100-ns units of the source play
// as 400000 (40 ms), so a 24 fps film (rate 416666) plays at 25 fps. Rate 0 (or below 1) is
// the identity, as is 400000 itself. Times that are GST_CLOCK_TIME_NONE stay so.
class TimeScale {
 public:
  explicit TimeScale(int32_t rate = 0);
  // For a film of `rateNumerator`/`rateDenominator` frames a second. When `rate` is the
  // film's own frame duration (which whole 100-ns units can only round), its exact duration
  // plays as 40 ms, so 24 fps becomes exactly 25; otherwise as TimeScale(rate).
  static TimeScale ForFilm(int32_t rate, int rateNumerator, int rateDenominator);
  bool Identity() const;
  int32_t rate() const { return rate_; }
  // The frame rate `numerator`/`denominator` as the output plays it.
  void ScaleFrameRate(int numerator, int denominator, int* outNumerator,
                      int* outDenominator) const;

  // source x 400000 / rate (or the film's exact ratio), rounded down, without overflow.
  GstClockTime ToOutput(GstClockTime source) const;
  // output x rate / 400000, rounded down: where an output time falls in the source.
  GstClockTime ToSource(GstClockTime output) const;
  // Signed values of the TIME format (a -1 stays -1).
  int64_t ToOutputSigned(int64_t source) const;
  int64_t ToSourceSigned(int64_t output) const;

  // A TIME segment's start, stop, time, base, position, duration and offset, scaled to
  // the output. Other formats are left alone.
  void ScaleSegment(GstSegment* segment) const;
  // A seek asked in output time, as the source understands it (a new event; the caller
  // keeps its own). Seeks in other formats come back as a new reference to the same event.
  GstEvent* SeekToSource(GstEvent* seek) const;
  // Scales the TIME answer of a duration, position, segment or convert query to the
  // output, in place; other queries and formats are left alone. A convert query has both
  // of its values scaled when they are times: the question was asked in source time (see
  // ConvertQueryToSource), so it comes back rounded down, possibly 1 ns below the original.
  void AnswerToOutput(GstQuery* query) const;
  // A convert query asked in output time, turned into source time before it goes upstream
  // (in place).
  void ConvertQueryToSource(GstQuery* query) const;

 private:
  int32_t rate_;
  // output = source x outputUnits_ / sourceUnits_.
  uint64_t outputUnits_;
  uint64_t sourceUnits_;
};

// The sample rate at which the sound plays in step with the faster picture:
// rate x frameRate / 400000, rounded down (48000 Hz at 416666 gives 49999 Hz). A frame rate
// below 1 leaves it as it is.
uint32_t RaisedSampleRate(uint32_t sampleRate, int32_t frameRate);

}  // namespace korvalin::gst
