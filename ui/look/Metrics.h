// Every size of the window, in logical pixels.
#pragma once

namespace tavo::metrics {

// Window
inline constexpr int kFirstWidth = 980;
inline constexpr int kFirstHeight = 640;
inline constexpr int kSmallestWidth = 760;
inline constexpr int kSmallestHeight = 520;
inline constexpr int kWindowRadius = 18;
inline constexpr int kResizeEdge = 6;     // inside the window's edge
inline constexpr int kResizeOutside = 6;  // outside it, where there is a margin
inline constexpr int kShadowMargin = 28;  // around the window, where the desktop takes one

// Text
inline constexpr int kBody = 13;
inline constexpr int kTitle2 = 17;
inline constexpr int kCallout = 12;
inline constexpr int kCaption = 10;
inline constexpr int kSymbol = 16;

inline constexpr int kWidestToolTip = 320;

// Sidebar
inline constexpr int kSidebarWidth = 200;
inline constexpr int kSidebarPadding = 18;
inline constexpr int kSidebarSpacing = 9;
inline constexpr int kHeaderBottom = 15;
inline constexpr int kLogoSide = 34;
inline constexpr int kCloseButtonSide = 20;
inline constexpr int kCloseSide = 14;
inline constexpr int kCloseCross = 8;  // of kCloseSide, the part that the lines take
inline constexpr int kRowHorizontal = 11;
inline constexpr int kRowVertical = 9;
inline constexpr int kRowRadius = 9;
inline constexpr int kSymbolSpacing = 8;
inline constexpr int kIndentation = 14;
inline constexpr int kSmallestLabel = 60;
inline constexpr int kEditButtonTop = 8;

// Toolbar
inline constexpr int kBarHorizontal = 22;
inline constexpr int kToolbarVertical = 16;
inline constexpr int kToolbarSpacing = 14;
inline constexpr int kFieldPadding = 10;
inline constexpr int kFieldRadius = 10;
inline constexpr int kWidestField = 900;

// Grid
inline constexpr int kSmallestColumn = 100;
inline constexpr int kLargestColumn = 130;
inline constexpr int kColumnSpacing = 20;
inline constexpr int kRowSpacing = 24;
inline constexpr int kGridPadding = 28;

// Tile
inline constexpr int kTileSpacing = 8;
inline constexpr int kIconSide = 68;
inline constexpr int kIconShadowRadius = 5;
inline constexpr int kIconShadowOffset = 2;
inline constexpr int kTileName = 12;
inline constexpr int kLargestName = 112;
inline constexpr int kStarHeight = 12;
inline constexpr int kTileRadius = 12;

// Footer
inline constexpr int kFooterVertical = 12;

// Sheets
inline constexpr int kSheetRadius = 12;
inline constexpr int kSheetMargin = 10;

// Alert
inline constexpr int kAlertWidth = 320;
inline constexpr int kAlertPadding = 20;
inline constexpr int kAlertSpacing = 12;

// Category editor
inline constexpr int kEditorSide = 500;
inline constexpr int kEditorPadding = 22;
inline constexpr int kEditorSpacing = 16;
inline constexpr int kSmallestRowList = 180;
inline constexpr int kLowestRowList = 60;  // where the window has no room for more
inline constexpr int kRowListRadius = 7;
inline constexpr int kEditorRowSpacing = 10;
inline constexpr int kEditorFieldSpacing = 5;
inline constexpr int kSmallestPicker = 208;

}  // namespace tavo::metrics
