#pragma once

#include "Platform/UIViewController.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A question to the user, in front of everything else. The library presents nothing over it.
class VORLANE_EXPORT UIAlertController : public UIViewController {
public:
    ~UIAlertController() override;
};

}  // namespace vorlane
