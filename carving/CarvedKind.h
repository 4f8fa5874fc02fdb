#pragma once

// The kinds of file the carving pass recognises, in the order they are tested.
enum class CarvedKind { SevenZip, Bmp, Gif, Jpg, Png, Tiff, Ico, None };

constexpr int kCarvedKindCount = int(CarvedKind::None);
