#include "Public/VLInterstitialViewController.h"

namespace vorlane {

VLInterstitialViewController::~VLInterstitialViewController() = default;

}  // namespace vorlane
