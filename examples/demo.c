/*
 * demo.c - a tour of the complex DFT of libtvkgenu8.
 *
 * Prints the version record, transforms a 16-point test signal forward in
 * both element types, once through the length switch and once through the
 * Codelet of length 16, shows the spectrum magnitudes, and transforms back.
 * Exits non-zero if any call fails or a result is off.
 */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "tvkgen.h"

enum { kLength = 16 };

/* DC of 1, a tone of amplitude 2 at bin 3 and one of amplitude 0.5 at bin 11.
 * With ScaleDivFwdByN the forward spectrum holds exactly these amplitudes. */
static const double kDc = 1.0;
static const struct { int bin; double amplitude; } kTones[] = { { 3, 2.0 }, { 11, 0.5 } };

static void make_signal(tvk64fc x[kLength]) {
    const double pi = 3.14159265358979323846;
    for (int n = 0; n < kLength; ++n) {
        x[n].re = kDc;
        x[n].im = 0.0;
        for (size_t t = 0; t < sizeof kTones / sizeof kTones[0]; ++t) {
            const double phase = 2.0 * pi * kTones[t].bin * n / kLength;
            x[n].re += kTones[t].amplitude * cos(phase);
            x[n].im += kTones[t].amplitude * sin(phase);
        }
    }
}

static double expected_magnitude(int bin) {
    double magnitude = bin == 0 ? kDc : 0.0;
    for (size_t t = 0; t < sizeof kTones / sizeof kTones[0]; ++t)
        if (kTones[t].bin == bin) magnitude += kTones[t].amplitude;
    return magnitude;
}

static int check(const char* what, tvkStatus status) {
    if (status != StatusOk) fprintf(stderr, "demo: %s returned status %d\n", what, (int)status);
    return status == StatusOk;
}

static void print_version(void) {
    const tvkLibraryVersion* v = tvkgenGetLibVersion();
    printf("library   %s\n", v->name);
    printf("version   %d.%d.%d revision %d (\"%s\")\n", v->major, v->minor, v->patch, v->revision, v->version);
    printf("target    \"%.4s\"\n", v->target);
    printf("built     %s\n\n", v->buildDate);
}

int main(void) {
    /* 16-byte alignment selects the aligned path of the bodies; any alignment
     * would give the same bits. */
    _Alignas(16) tvk64fc signal64[kLength], spectrum64[kLength], codelet64[kLength], back64[kLength];
    _Alignas(16) tvk32fc signal32[kLength], spectrum32[kLength], codelet32[kLength], back32[kLength];
    int ok = 1;

    print_version();

    make_signal(signal64);
    for (int n = 0; n < kLength; ++n) {
        signal32[n].re = (tvk32f)signal64[n].re;
        signal32[n].im = (tvk32f)signal64[n].im;
    }

    /* Forward, scaled by 1/N: through the length switch and through the Codelet. */
    ok &= check("tvkgDFTFwd_CToC_32fc", tvkgDFTFwd_CToC_32fc(signal32, spectrum32, kLength, ScaleDivFwdByN));
    ok &= check("tvkgDFTFwd_CToC_16_32fc", tvkgDFTFwd_CToC_16_32fc(signal32, codelet32, ScaleDivFwdByN));
    ok &= check("tvkgDFTFwd_CToC_64fc", tvkgDFTFwd_CToC_64fc(signal64, spectrum64, kLength, ScaleDivFwdByN));
    ok &= check("tvkgDFTFwd_CToC_16_64fc", tvkgDFTFwd_CToC_16_64fc(signal64, codelet64, ScaleDivFwdByN));
    if (!ok) return 1;

    /* The switch only hands on to the Codelet, so the bits must agree. */
    if (memcmp(spectrum32, codelet32, sizeof spectrum32) != 0 ||
        memcmp(spectrum64, codelet64, sizeof spectrum64) != 0) {
        fprintf(stderr, "demo: length switch and Codelet disagree\n");
        return 1;
    }

    printf("forward DFT of length %d, ScaleDivFwdByN: |X[k]|\n", kLength);
    printf("  bin   expected    tvk32fc       tvk64fc\n");
    double worst_bin_error = 0.0;
    for (int k = 0; k < kLength; ++k) {
        const double expected = expected_magnitude(k);
        const double m32 = hypot(spectrum32[k].re, spectrum32[k].im);
        const double m64 = hypot(spectrum64[k].re, spectrum64[k].im);
        worst_bin_error = fmax(worst_bin_error, fmax(fabs(m32 - expected), fabs(m64 - expected)));
        printf("  %3d   %8.4f    %10.7f    %18.15f%s\n", k, expected, m32, m64, expected > 0 ? "  <- peak" : "");
    }

    /* Inverse with the same flag applies no scale, so it returns the input. */
    ok &= check("tvkgDFTInv_CToC_32fc", tvkgDFTInv_CToC_32fc(spectrum32, back32, kLength, ScaleDivFwdByN));
    ok &= check("tvkgDFTInv_CToC_16_64fc", tvkgDFTInv_CToC_16_64fc(spectrum64, back64, ScaleDivFwdByN));
    if (!ok) return 1;

    double round_trip32 = 0.0, round_trip64 = 0.0;
    for (int n = 0; n < kLength; ++n) {
        round_trip32 = fmax(round_trip32, fmax(fabs(back32[n].re - signal32[n].re), fabs(back32[n].im - signal32[n].im)));
        round_trip64 = fmax(round_trip64, fmax(fabs(back64[n].re - signal64[n].re), fabs(back64[n].im - signal64[n].im)));
    }
    printf("\nround trip forward + inverse, max |x - x'|: tvk32fc %.3g, tvk64fc %.3g\n", round_trip32, round_trip64);

    /* Generous bounds: a few units in the last place of each type, times N. */
    if (worst_bin_error > 1e-5 || round_trip32 > 1e-5 || round_trip64 > 1e-13) {
        fprintf(stderr, "demo: results outside tolerance\n");
        return 1;
    }
    printf("all calls returned StatusOk and all results are within tolerance\n");
    return 0;
}
