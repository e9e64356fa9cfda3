#pragma once

#include <QImage>
#include <string>

#include "series/pixel_buffers.h"

namespace lumiquilt {

/// Decodes a picture file (BMP, JPEG, GIF, PNG, ...) into a form the pixel buffers
/// take in one bulk transfer. Throws RuntimeError 53 when the file is missing,
/// 481 when it exists but is no picture that can be read, 7 without memory.
QImage loadPicture(const std::string& fileName);

/// As loadPicture, but a JPEG picture is decoded into `scratch` (grown when too
/// small) instead of fresh memory: the picture returned is then a view on the
/// scratch, good until the scratch is used again or goes.
QImage loadPictureInto(const std::string& fileName, SampleBuffer& scratch);

/// The engine's view of a decoded picture; the image must outlive the view.
PictureView viewOf(const QImage& image);

/// A picture of width by height made from the frame of a montage slot.
QImage pictureFromFrame(const uint8_t* frame, int frameWidth, int frameHeight, int width,
                        int height);

/// The opaque 32-bit picture that a frame seen as a picture holds, as the decoder
/// gives one: what a window shows when its picture stands in a frame.
QImage opaquePictureOf(const PictureView& framed);
/// The same picture in 24 bits, as paintMontage gives a montage's.
QImage bgrPictureOf(const PictureView& framed);
/// The part of it in `area` alone, in memory of Qt's rather than the buffers': what a
/// window paints of it at full size, for the moment of the paint. Null when the area
/// lies outside or there is no room.
QImage opaquePartOf(const PictureView& framed, QRect area);

/// The montage as its window shows it: the picture of width by height that slot 100
/// paints, the padded frame put down one to one and cut to the picture.
QImage paintMontage(const PixelBuffers& buffers, int width, int height);

/// The preview picture of width by height from previewPixels.
QImage paintPreview(const PixelBuffers& buffers, int width, int height);

/// Writes a picture as BMP, PNG or JPEG by the name's extension (or as `format`,
/// "BMP", "PNG" or "JPEG", whatever the name), through a temporary file beside the
/// target. Throws RuntimeError on failure; the target stays as it was.
void savePicture(const QImage& image, const std::string& fileName, const char* format = nullptr);

/// Writes slot 100 as the montage picture of width by height, in the format that the
/// name's extension chooses (.bmp, .png, .jpg or .jpeg, .gif with the program's own
/// encoder): byte for byte what saving paintMontage's picture gives, without that
/// picture in between where the format allows. Throws RuntimeError as savePicture.
void saveMontage(const PixelBuffers& buffers, int width, int height, const std::string& fileName);

/// The picture at `size` for a window that shows it reduced, smoothly scaled: cut
/// down by whole squares while it is twice the size or more, then filtered
/// bilinearly to the exact size.
QImage scaledForDisplay(const QImage& picture, QSize size);
/// The same for a frame seen as a picture, without a copy of the whole picture on the way.
QImage scaledFrameForDisplay(const PictureView& framed, QSize size);

/// Copies a picture into its frame as readPictureIntoFrame does and gives it scaled
/// for display to `size` as scaledForDisplay does; empty or the picture's own size asks
/// for no copy. A reduction by whole squares sums each band of rows just packed, while
/// it is still in the caches, instead of reading the whole picture again.
QImage readIntoFrameAndScale(const QImage& picture, uint8_t* frame, int frameWidth, int frameHeight,
                             QSize size);

/// Raises the decoder's memory limit once, so that large photographs load.
void configurePictureReading();

}  // namespace lumiquilt
