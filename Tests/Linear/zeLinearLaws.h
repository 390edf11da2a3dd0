// SPDX-License-Identifier: MIT

#pragma once

/// Holds each algebraic law of the area on `inputs` random inputs, the same ones in each run,
/// against its tolerance.
void expectLaws(int inputs);
