#pragma once

#include <span>
#include <string_view>

namespace korvalin::ui {

// The kinds of control a page is made of.
enum class ControlKind {
  kGroupBox,
  kLabel,             // static text
  kCentredLabel,      // static text, centred, may hold a line break
  kHiddenMarker,      // an invisible label that marks a rectangle to paint in
  kCheckBox,
  kEdit,
  kDigitsEdit,        // an edit that takes digits only
  kDropDownList,      // a list to choose from, no typing
  kEditableDropDown,  // a list whose edit part takes any text
  kSortedEditableDropDown,
  kPushButton,
  kTrackBar,          // a horizontal slider
};

// One control of a page, placed in dialog units (a quarter of the dialog font's average
// character width across, an eighth of its height down). Id 0: a control nobody addresses.
struct ControlTemplate {
  int id;
  ControlKind kind;
  std::string_view text;
  int x, y, width, height;
};

// A page's dialog: what any toolkit needs to build it.
struct DialogTemplate {
  int id;
  std::string_view title;  // the tab's title
  int width, height;       // dialog units
  std::span<const ControlTemplate> controls;
};

}  // namespace korvalin::ui
