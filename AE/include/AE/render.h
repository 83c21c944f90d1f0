// From a snapshot to the pixels of the host's output.
#pragma once

#include <AE/instance.h>
#include <host_api/effect_interface.h>
#include <libkelvimage/image.h>

/// Of the float image: alpha, red, green, blue, whatever its format's name says of their order.
inline constexpr int kFloatsPerPixel = 4;

/// Draws all stars of the chosen database and writes the frame, opaque stars on black, into
/// `output`, whose pixels have `format`.
///
/// Throws exceptions of the `Xception` family: no database found, one that cannot be read, a frame
/// too large for its float image, an output that is null, a format other than the three of
/// `convert_image`. The output is then untouched.
void Lumivar_Render(const MyInstance& instance, int width, int height, PF_PixelFormat format,
                    PF_EffectWorld* output);

/// Destroys a `MyInstance`; what the host calls when it is done with a pre-render's data.
void delete_MyInstance(void* instance);

/// Writes the whole image into the output's upper left corner in one pass.
///
/// The image holds linear light, `kFloatsPerPixel` floats a pixel. `format` is 8-bit
/// (0 to 255), 16-bit (0 to 32768) or float ARGB; the result is opaque whatever the image's alpha.
/// Integer codes are rounded half up; what lies beyond their range becomes the range's end, what is
/// not a number 0; floats are copied as they are. Throws `StrXception` for any other format, before
/// anything is written. A large image gives its memory back on the way: what it holds is undefined
/// afterwards.
void convert_image(Kelv::Image& image, PF_PixelFormat format, PF_EffectWorld* output);

/// Whether an image's 32-bit sizes can hold a frame of four floats a pixel.
bool float_image_fits(int width, int height);
