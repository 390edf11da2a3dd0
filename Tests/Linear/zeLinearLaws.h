// SPDX-License-Identifier: MIT

#pragma once

/// Holds each of the algebraic laws on `inputs` random inputs, the same ones in each run,
/// against its tolerance.
void expectLaws(int inputs);
