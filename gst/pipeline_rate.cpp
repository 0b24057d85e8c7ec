#include "gst/pipeline_rate.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace korvalin::gst {

namespace {

constexpr char kDataKey[] = "korvalin-pipeline-rate";

// What the video elements of one top-level pipeline said, kept on that pipeline.
class PipelineRate {
 public:
  void Expect(const GstElement* video) {
    std::lock_guard hold(lock_);
    Find(video);
  }

  void Publish(const GstElement* video, int32_t rate) {
    {
      std::lock_guard hold(lock_);
      Video& entry = Find(video);
      entry.published = true;
      entry.rate = rate;
      entry.order = ++publications_;
    }
    changed_.notify_all();
  }

  void Withdraw(const GstElement* video) {
    {
      std::lock_guard hold(lock_);
      std::erase_if(videos_, [video](const Video& v) { return v.element == video; });
    }
    changed_.notify_all();
  }

  // Waits while video elements are expected and none has decided.
  int32_t Await(std::chrono::milliseconds limit) {
    std::unique_lock hold(lock_);
    changed_.wait_for(hold, limit, [this] { return videos_.empty() || Latest() != nullptr; });
    const Video* latest = Latest();
    return latest != nullptr ? latest->rate : 0;
  }

 private:
  struct Video {
    const GstElement* element;  // only compared, never used
    bool published = false;
    int32_t rate = 0;
    uint64_t order = 0;  // which publication came last, when several elements decide
  };

  Video& Find(const GstElement* video) {
    auto it = std::find_if(videos_.begin(), videos_.end(),
                           [video](const Video& v) { return v.element == video; });
    if (it != videos_.end()) return *it;
    return videos_.emplace_back(Video{video});
  }

  const Video* Latest() const {
    const Video* latest = nullptr;
    for (const Video& v : videos_)
      if (v.published && (latest == nullptr || v.order > latest->order)) latest = &v;
    return latest;
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Video> videos_;
  uint64_t publications_ = 0;
};

// The outermost bin holding `element` (the element itself when it has no parent), with a
// reference the caller drops.
GstObject* TopLevel(GstElement* element) {
  GstObject* top = GST_OBJECT(gst_object_ref(element));
  while (GstObject* parent = gst_object_get_parent(top)) {
    gst_object_unref(top);
    top = parent;
  }
  return top;
}

// The shared state of `element`'s pipeline, created on first use. A global lock makes sure
// two threads asking at once get the same one. It lives as long as the pipeline object, so
// it stays valid while the caller holds the reference in `top`.
PipelineRate& StateOf(GstObject* top) {
  static std::mutex creation;
  std::lock_guard hold(creation);
  auto* state = static_cast<PipelineRate*>(g_object_get_data(G_OBJECT(top), kDataKey));
  if (state != nullptr) return *state;
  auto created = std::make_unique<PipelineRate>();
  state = created.get();
  g_object_set_data_full(G_OBJECT(top), kDataKey, created.release(), [](gpointer data) {
    std::unique_ptr<PipelineRate>(static_cast<PipelineRate*>(data));
  });
  return *state;
}

// Runs `action` on the shared state of `element`'s pipeline.
template <class Action>
auto WithState(GstElement* element, Action action) {
  GstObject* top = TopLevel(element);
  struct Release {
    GstObject* top;
    ~Release() { gst_object_unref(top); }
  } release{top};
  return action(StateOf(top));
}

}  // namespace

void ExpectVideoRate(GstElement* videoElement) {
  WithState(videoElement, [videoElement](PipelineRate& s) { s.Expect(videoElement); });
}

void PublishVideoRate(GstElement* videoElement, int32_t rate) {
  WithState(videoElement, [videoElement, rate](PipelineRate& s) { s.Publish(videoElement, rate); });
}

void WithdrawVideoRate(GstElement* videoElement) {
  WithState(videoElement, [videoElement](PipelineRate& s) { s.Withdraw(videoElement); });
}

int32_t AwaitVideoRate(GstElement* audioElement, std::chrono::milliseconds limit) {
  return WithState(audioElement, [limit](PipelineRate& s) { return s.Await(limit); });
}

}  // namespace korvalin::gst
