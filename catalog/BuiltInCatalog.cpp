// The table itself.
#include "catalog/BuiltInCatalog.h"

namespace vantory {

namespace {

constexpr BuiltInFile prefs(const char* pattern) {
  return {Base::Preferences, pattern};
}

constexpr BuiltInFile support(const char* pattern) {
  return {Base::ApplicationSupport, pattern};
}

constexpr BuiltInFile documents(const char* pattern) {
  return {Base::Documents, pattern};
}

}  // namespace

// clang-format off
// To add an application or an item, add a row. Names and keys stand in backups, scripts and saved selections: a change
// of one orphans what users have, so the odd ones stay ("motionKeyLayout").
const std::vector<BuiltInApp>& builtInCatalog() {
  static const std::vector<BuiltInApp> table = {
      {"Final Cut Pro", "Final Cut Pro.icns", "com.apple.FinalCutPro", {
          {"Preferences", "fcpPrefs", {
              prefs("com.apple.FinalCutPro.plist"),
              prefs("Final Cut Pro User Data/Final Cut Pro * Prefs.fcset"),
              prefs("Final Cut Pro User Data/Final Cut Pro Obj Cache.fcmch"),
              prefs("Final Cut Pro User Data/Final Cut Pro Prof Cache.fcpch")}},
          {"Boris Plugin Preferences", "fcpBoris", {
              prefs("com.borisfx.Text Scrambler"),
              prefs("com.borisfx.Title 3D"),
              prefs("com.borisfx.Title Crawl"),
              prefs("com.borisfx.Vector Shape")}},
          {"Button Bars", "fcpButton", {prefs("Final Cut Pro User Data/Button Bars")}},
          {"Keyboard Layouts", "fcpKeyboard", {prefs("Final Cut Pro User Data/Keyboard Layouts")}},
          {"Window Layouts", "fcpWindow", {prefs("Final Cut Pro User Data/Window Layouts")}},
          {"Column Layouts", "fcpColumn", {prefs("Final Cut Pro User Data/Column Layouts")}},
          {"Track Layouts", "fcpTrack", {prefs("Final Cut Pro User Data/Track Layouts")}},
          {"Custom Settings", "fcpCustom", {prefs("Final Cut Pro User Data/Custom Settings")}},
          {"Plugins", "fcpPlugins", {prefs("Final Cut Pro User Data/Plugins")}}}},

      {"Final Cut Pro X", "FCPX.png", "com.apple.FinalCut", {
          {"Preferences", "fcpxPrefs", {
              prefs("com.apple.FinalCut.plist"),
              prefs("com.apple.FinalCut.LSSharedFileList.plist")}},
          {"Window Layouts", "fcpxWinLayouts", {support("Final Cut Pro/Layouts/*.moduleLayout")}},
          {"Keyboard Layouts", "fcpxKeyLayouts", {support("Final Cut Pro/Command Sets/*.commandset")}}}},

      {"Final Cut Pro X Trial", "FCPX.png", "com.apple.FinalCutTrial", {
          {"Preferences", "fcpxTrialPrefs", {
              prefs("com.apple.FinalCutTrial.plist"),
              prefs("com.apple.FinalCutTrial.LSSharedFileList.plist")}}}},

      {"Avid Media Composer", "avid.png", "com.avid.MediaComposer", {
          {.name = "Preferences", .key = "avidPrefs", .files = {}, .lockable = false, .hasAvidUsers = true}}},

      {"Adobe Premiere Pro", "premiere.png", "com.adobe.AdobePremierePro", {
          {"Preferences", "premierePrefs", {
              support("Adobe/Premiere Pro/*/Adobe Premiere Pro Prefs"),
              prefs("com.Adobe.Premiere Pro.*.plist")}},
          {"Sequence Presets", "premiereSequencePresets", {
              documents("Adobe/Premiere Pro/*/Settings/*/*.sqpreset")}},
          {"Effect Presets", "premiereEffectPresets", {
              support("Adobe/Premiere Pro/*/Effect Presets and Custom Items.prfpset")}},
          {"Styles", "premiereStyles", {documents("Adobe/Premiere Pro/*/styles/*.prsl")}},
          {.name = "Workspaces", .key = "premiereWorkspaces",
           .files = {documents("Adobe/Premiere Pro/*/Layouts/*.xml")}, .lockable = false},
          {"Column Settings", "premiereColumnSettings", {
              support("Adobe/Premiere Pro/*/Media Browser Column Settings")}}}},

      {"Adobe After Effects", "after_effects.png", "com.adobe.AdobeAfterEffects", {
          {"Preferences", "aePrefs", {
              prefs("Adobe/After Effects/*/Adobe After Effects * Prefs"),
              prefs("Adobe/After Effects/*/Adobe After Effects * Shortcuts"),
              prefs("Adobe/After Effects/*/Adobe After Effects *-x64 Prefs"),
              prefs("com.Adobe.After Effects.*.plist")}},
          {.name = "Workspaces", .key = "aeWorkspaces",
           .files = {prefs("Adobe/After Effects/*/ModifiedWorkspaces/*.xml")}, .lockable = false}}},

      {"Final Cut Express", "Final Cut Pro.icns", "com.apple.FinalCutExpress", {
          {"Preferences", "fcePrefs", {
              prefs("com.apple.FinalCutExpress.plist"),
              prefs("Final Cut Express User Data/Final Cut Express * Prefs.fcset"),
              prefs("Final Cut Express User Data/Final Cut Express Obj Cache.fcmch"),
              prefs("Final Cut Express User Data/Final Cut Express Prof Cache.fcpch")}},
          {"Button Bars", "fceButton", {prefs("Final Cut Express User Data/Button Bars")}},
          {"Keyboard Layouts", "fceKeyboard", {prefs("Final Cut Express User Data/Keyboard Layouts")}},
          {"Window Layouts", "fceWindow", {prefs("Final Cut Express User Data/Window Layouts")}},
          {"Column Layouts", "fceColumn", {prefs("Final Cut Express User Data/Column Layouts")}},
          {"Track Layouts", "fceTrack", {prefs("Final Cut Express User Data/Track Layouts")}},
          {"Custom Settings", "fceCustom", {prefs("Final Cut Express User Data/Custom Settings")}},
          {"Plugins", "fcePlugins", {prefs("Final Cut Express User Data/Plugins")}}}},

      {"Motion", "Motion.icns", "com.apple.motion", {
          {"Preferences", "motionPrefs", {
              prefs("com.apple.motion.plist"),
              prefs("com.apple.motion.LSSharedFileList.plist")}},
          {"Keyboard Layouts", "motionKeyLayout", {support("Motion/Command Sets/*.commandset")}}}},

      {"Motion 5", "Motion5.png", "com.apple.motionapp", {
          {"Preferences", "motion5Prefs", {
              prefs("com.apple.motionapp.plist"),
              prefs("com.apple.motionapp.LSSharedFileList.plist")}},
          {"Window Layouts", "motion5WinLayouts", {support("Motion/Layouts/*.moduleLayout")}},
          {"Keyboard Layouts", "motion5KeyLayouts", {support("Motion/Command Sets/*.commandset")}}}},

      {"Color", "Color.icns", "com.apple.color", {
          {"Preferences", "colorPrefs", {prefs("com.apple.color.plist"), prefs("Color/*.prf")}}}},

      {"Soundtrack Pro", "Soundtrack Pro.icns", "com.apple.soundtrackpro", {
          {"Preferences", "stpPrefs", {prefs("com.apple.soundtrackpro.plist")}}}},

      {"Compressor", "Compressor_app.icns", "com.apple.compressor.Compressor", {
          {"Preferences", "compressorPrefs", {
              prefs("com.apple.compressor.Compressor.plist"),
              prefs("com.apple.compressor.CompressorSharedService.plist")}},
          {"Settings", "compressorSettings", {
              support("Compressor/.DefaultPreset"),
              support("Compressor/*.setting")}},
          {"Destinations", "compressorDestinations", {
              support("Compressor/.DefaultTemplate"),
              support("Compressor/*.destinationTemplate")}}}},

      {"Compressor 4", "Compressor4.png", "com.apple.compressor.Compressor", {
          {"Preferences", "compressor4Prefs", {prefs("com.apple.Compressor.plist")}},
          {"Settings", "compressor4Settings", {
              support("Compressor/.DefaultPreset"),
              support("Compressor/*.setting")}},
          {"Destinations", "compressor4Destinations", {
              support("Compressor/.DefaultTemplate"),
              support("Compressor/*.destinationTemplate")}}}},

      {"DVD Studio Pro", "DVD Studio Pro.icns", "com.apple.dvdstudiopro", {
          {"Preferences", "dvdspPrefs", {prefs("com.apple.dvdstudiopro.plist")}}}},

      {"Batch Monitor", "Batch Monitor.icns", "com.apple.BatchMonitor", {
          {"Preferences", "batchmonPrefs", {prefs("com.apple.BatchMonitor.plist")}}}},

      {"Cinema Tools", "Cinema Tools.icns", "com.apple.CinemaTools", {
          {"Preferences", "ctPrefs", {prefs("com.apple.CinemaTools.plist")}}}},

      {"LiveType", "LiveType.icns", "com.apple.LiveType", {
          {"Preferences", "livetypePrefs", {prefs("com.apple.LiveType.plist")}}}},
  };
  return table;
}
// clang-format on

}  // namespace vantory
