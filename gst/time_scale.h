#pragma once

#include <cstdint>

#include <gst/gst.h>

namespace korvalin::gst {

// The stream times of a film played faster: every `rate` 100-ns units of the source play
// as 400000 (40 ms), so a 24 fps film (rate 416666) plays at 25 fps. Rate 0 (or below 1) is
// the identity. Times that are GST_CLOCK_TIME_NONE stay so.
class TimeScale {
 public:
  explicit TimeScale(int32_t rate = 0);
  bool Identity() const;
  int32_t rate() const { return rate_; }

  // source x 400000 / rate, rounded down, computed without overflow.
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
  // output, in place; other queries and formats are left alone.
  void AnswerToOutput(GstQuery* query) const;
  // A convert query asked in output time, turned into source time before it goes upstream
  // (in place).
  void ConvertQueryToSource(GstQuery* query) const;

 private:
  int32_t rate_;
};

// The sample rate at which the sound plays in step with the faster picture:
// rate x frameRate / 400000, rounded down (48000 Hz at 416666 gives 49999 Hz). A frame rate
// below 1 leaves it as it is.
uint32_t RaisedSampleRate(uint32_t sampleRate, int32_t frameRate);

}  // namespace korvalin::gst
