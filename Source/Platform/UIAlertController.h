#pragma once

#include "Platform/UIViewController.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A question to the user that stays in front of every other view controller. The library presents none over it.
class VORLANE_EXPORT UIAlertController : public UIViewController {
public:
    ~UIAlertController() override;
};

}  // namespace vorlane
