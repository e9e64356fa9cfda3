#pragma once

#include <memory>

#include "engine/create_image.h"

namespace lumiquilt {

class FormMontage;

/// The window program's side of a Create Image run: the controls and the picture
/// windows of `form`. The commands that run Create Image again and again drive the
/// road through it, as the button does.
std::unique_ptr<CreateImageFront> createImageWindows(FormMontage& form);

}  // namespace lumiquilt
