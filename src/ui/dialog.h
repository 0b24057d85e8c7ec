#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvalin::ui {

enum class MessageIcon { kExclamation, kError };

// What happened to a control, as a page is told.
enum class Notification {
  kClicked,           // a button or check box
  kSelectionChanged,  // a list's selection
  kEditChanged,       // the text of an edit or of a list's edit part
  kOther,
};

// A message to a page: a command from a control, a track bar moved, or a request to paint.
struct PageMessage {
  enum class Kind { kCommand, kHorizontalScroll, kPaint };
  Kind kind = Kind::kCommand;
  int control = 0;
  Notification notification = Notification::kOther;
};

// A font asked for when painting text (the About page's title).
struct FontRequest {
  std::string face;
  int weight = 400;
  int height = 0;  // pixels; negative: the character height without internal leading
};

// The toolkit-neutral dialog a page is shown in: its controls by id, and the few services of
// the desktop a page uses. A headless implementation drives pages in tests; the desktop
// implements it with real widgets. Lists are drop-down lists and editable drop-downs; texts
// are UTF-8.
class Dialog {
 public:
  virtual ~Dialog() = default;

  // Edits, labels, buttons and the edit part of editable drop-downs.
  virtual void SetText(int id, std::string_view text) = 0;
  virtual std::string Text(int id) = 0;
  virtual void SetChecked(int id, bool checked) = 0;
  virtual bool Checked(int id) = 0;

  // Sorted lists insert in their own order; the others append.
  virtual void ClearItems(int id) = 0;
  virtual void AddItem(int id, std::string_view text) = 0;
  virtual int ItemCount(int id) = 0;
  virtual std::string ItemText(int id, int index) = 0;
  virtual void Select(int id, int index) = 0;  // -1: no selection
  virtual int Selected(int id) = 0;            // -1: none

  // Track bars.
  virtual void SetRange(int id, int minimum, int maximum) = 0;
  virtual void SetPosition(int id, int position) = 0;
  virtual int Position(int id) = 0;

  virtual void Enable(int id, bool enabled) = 0;
  virtual bool Enabled(int id) = 0;

  // Desktop services.
  virtual void ShowMessage(std::string_view text, std::string_view title, MessageIcon icon) = 0;
  // The colour chooser in its full form, starting at `initial` (0x00BBGGRR); none when
  // cancelled.
  virtual std::optional<uint32_t> ChooseColor(uint32_t initial) = 0;
  // An open-file chooser for existing files; none when cancelled.
  virtual std::optional<std::string> ChooseFile(std::string_view filterName,
                                                std::string_view patterns) = 0;
  // Opens a file or a web address in the user's viewer; false when nothing could.
  virtual bool OpenExternally(std::string_view target) = 0;
  // Vertical pixels per logical inch of the display.
  virtual int DotsPerInch() = 0;
  // Paints one line of text centred in the rectangle of control `markerId` (only while the
  // page handles a paint message).
  virtual void PaintCentredText(int markerId, std::string_view text, const FontRequest& font,
                                uint32_t colour) = 0;
  // The page has changes to apply: the frame enables its Apply button.
  virtual void PageChanged() = 0;
};

}  // namespace korvalin::ui
