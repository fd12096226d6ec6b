#pragma once

namespace platform {

// The toolkit's version number, which views compare to choose between behaviours of different
// toolkit releases. The toolkit reports kAppKitVersionNumberDefault unless told otherwise.
//
// 1671.0: the newest release whose image view draws aspect fill as a rendition of the picture.
// The share card sets a photo first and turns aspect fill on after; with a rendition the photo
// is cropped to cover its square, while the layer-backed releases above 1672.0 install their
// layer only on a later setImage and so show that photo stretched on both axes.
inline constexpr double kAppKitVersionNumberDefault = 1671.0;

// NSAppKitVersionNumber. Read on the main thread.
double NSAppKitVersionNumber();
// Makes the toolkit report |version| (tests use it to run both behaviours); a value that is not
// positive restores the default.
void setAppKitVersionNumber(double version);

}  // namespace platform
