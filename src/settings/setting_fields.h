#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "settings/settings.h"

namespace korvalin {

// The stored fields of Settings, named as in the store, in the orders the record is loaded
// and saved. A visitor offers
//   void Int(std::string_view name, Integer& field, int32_t defaultValue, int32_t min, int32_t max)
//   void Text(std::string_view name, FixedText<N>& field, std::string_view defaultText)
// where Integer is int32_t or uint32_t (colours).

template <class Style, class Visitor>
void VisitStyleForLoad(std::string_view prefix, Style& style, const FontStyle& defaults,
                       Visitor& v) {
  const std::string p(prefix);
  v.Text(p + "Charset", style.Charset, defaults.Charset.view());
  v.Text(p + "Face", style.Face, defaults.Face.view());
  v.Int(p + "Color", style.Color, static_cast<int32_t>(defaults.Color), 0, 0xFFFFFF);
  v.Int(p + "Transparent", style.Transparent, defaults.Transparent, 0, 1);
  v.Int(p + "Size", style.Size, defaults.Size, 16, 56);
  v.Int(p + "Weight", style.Weight, defaults.Weight, 100, 900);
  v.Int(p + "XPos", style.XPos, defaults.XPos, 0, 100);
  v.Int(p + "YPos", style.YPos, defaults.YPos, 0, 100);
}

// Load order, with each field's default and inclusive range.
template <class S, class Visitor>
void VisitFieldsInLoadOrder(S& s, Visitor& v) {
  const Settings d{Settings::DefaultsOnly{}};
  v.Int("LoadMode", s.LoadMode, d.LoadMode, 0, 3);
  v.Int("bOverscan", s.bOverscan, d.bOverscan, 0, 1);
  v.Int("Overscan", s.Overscan, d.Overscan, 0, 30);
  v.Int("bFill", s.bFill, d.bFill, 0, 1);
  v.Int("Fill", s.Fill, d.Fill, 50, 100);
  v.Int("bFillH", s.bFillH, d.bFillH, 0, 1);
  v.Int("FillH", s.FillH, d.FillH, 50, 100);
  v.Int("bFill2", s.bFill2, d.bFill2, 0, 1);
  v.Int("Flip", s.Flip, d.Flip, 0, 3);
  v.Int("TV", s.TV, d.TV, 0, 1);
  v.Int("Overlay", s.Overlay, d.Overlay, 0, 1);
  v.Int("AspectComp", s.AspectComp, d.AspectComp, 0, 3);
  v.Text("AspectComp2", s.AspectComp2, d.AspectComp2.view());
  v.Int("FPSConv", s.FPSConv, d.FPSConv, 0, 3);
  v.Int("YShift", s.YShift, d.YShift, 0, 1);
  v.Int("Economic", s.Economic, d.Economic, 0, 1);
  v.Int("SysTrayIcon", s.SysTrayIcon, d.SysTrayIcon, 0, 1);
  v.Text("SubLang", s.Sub.SubLang, d.Sub.SubLang.view());
  v.Text("SubPath", s.Sub.SubPath, d.Sub.SubPath.view());
  v.Int("SubDelay", s.Sub.SubDelay, d.Sub.SubDelay, -600000, 600000);
  v.Int("SubSpeed", s.Sub.SubSpeed, d.Sub.SubSpeed, 1, 5000);
  VisitStyleForLoad("Sub", s.Sub.style, d.Sub.style, v);
  v.Int("OSDVideoTime", s.OSD.OSDVideoTime, d.OSD.OSDVideoTime, 0, 2);
  v.Int("OSDWorldTime", s.OSD.OSDWorldTime, d.OSD.OSDWorldTime, 0, 1);
  VisitStyleForLoad("OSD", s.OSD.style, d.OSD.style, v);
}

// Passes on only the field named `wanted`.
template <class Visitor>
struct FieldFilter {
  std::string_view wanted;
  Visitor& inner;
  template <class I>
  void Int(std::string_view n, I& f, int32_t def, int32_t lo, int32_t hi) {
    if (n == wanted) inner.Int(n, f, def, lo, hi);
  }
  template <class T>
  void Text(std::string_view n, T& f, std::string_view def) {
    if (n == wanted) inner.Text(n, f, def);
  }
};

// Save order. The visitor's Int and Text are called as in the load order; the default and
// range arguments are those of the field but matter only to a visitor that wants them.
template <class S, class Visitor>
void VisitFieldsInSaveOrder(S& s, Visitor& v) {
  // Saving lists the same fields in another order; look each up in the load order's table
  // so that names, defaults and ranges are written down once.
  static constexpr std::string_view kOrder[] = {
      "LoadMode", "bFill", "Fill", "bFillH", "FillH", "bFill2", "bOverscan", "Overscan",
      "Flip", "TV", "Overlay", "AspectComp", "AspectComp2", "FPSConv", "YShift", "Economic",
      "SysTrayIcon", "SubPath", "SubLang", "SubDelay", "SubSpeed",
      "SubCharset", "SubSize", "SubWeight", "SubFace", "SubColor", "SubTransparent", "SubXPos",
      "SubYPos", "OSDVideoTime", "OSDWorldTime",
      "OSDCharset", "OSDSize", "OSDWeight", "OSDFace", "OSDColor", "OSDTransparent", "OSDXPos",
      "OSDYPos"};
  for (std::string_view name : kOrder) {
    FieldFilter<Visitor> one{name, v};
    VisitFieldsInLoadOrder(s, one);
  }
}

}  // namespace korvalin
