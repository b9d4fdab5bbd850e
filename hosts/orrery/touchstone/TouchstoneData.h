#pragma once

#include <QString>
#include <QStringList>

#include <complex>
#include <optional>
#include <string>
#include <vector>

namespace Orrery::Host {

/// Noise parameters of a two-port; all vectors are of one length.
struct TouchstoneNoise
{
    std::vector<double> frequencies;           ///< in Hz, ascending
    std::vector<double> minimumFigures;        ///< in dB
    std::vector<std::complex<double>> optimum; ///< reflection coefficient of the source at the minimum
    std::vector<double> resistances;           ///< in ohm
};

/// What a Touchstone file says, in SI units whatever it is written in.
struct TouchstoneData
{
    QString version;         ///< "1.0" or what [Version] says
    QString options;         ///< the option line as it stands
    QStringList comments;    ///< those before the values, without their "!"
    QStringList information; ///< lines between [Begin Information] and [End Information]
    char parameter = 'S';    ///< S, Y, Z, G or H
    std::size_t ports = 0;
    std::vector<double> references;  ///< resistance of each port in ohm
    std::vector<double> frequencies; ///< in Hz, not descending
    /// One vector over the frequencies for each element of the matrix, row by row. Y is in siemens, Z in ohm, and so
    /// are the elements of G and H that are no ratios.
    std::vector<std::vector<std::complex<double>>> values;
    std::optional<TouchstoneNoise> noise;
    std::vector<std::string> remarks; ///< what is odd about the file without keeping it from being read
};

} // namespace Orrery::Host
