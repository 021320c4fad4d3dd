#include "Animation/KRAnimationDurationMultiplier.h"

double KRAnimationDurationMultiplier = 1.0;
