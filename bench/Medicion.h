#pragma once

// Small helpers shared by the benchmarks: wall-clock and CPU timing of
// repeated runs, best and median, file sizes, the process's resident memory,
// and the "figure:" line that scripts/bench prints last.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <time.h>
#include <vector>

namespace teskal::bench {

// Wall-clock and process CPU seconds of one call. On a busy machine the CPU
// time of a single-threaded reader is the steadier of the two.
struct Medida {
    double pared = 0;
    double cpu = 0;
};

inline double segundosCPU() {
    timespec t{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

template <class F> Medida cronometrar(F&& f) {
    const double cpu0 = segundosCPU();
    const auto inicio = std::chrono::steady_clock::now();
    f();
    const auto fin = std::chrono::steady_clock::now();
    return {std::chrono::duration<double>(fin - inicio).count(), segundosCPU() - cpu0};
}

// Best and median of a set of runs, in seconds.
struct Tiempos {
    std::vector<double> pared;
    std::vector<double> cpu;

    void anadir(const Medida& m) {
        pared.push_back(m.pared);
        cpu.push_back(m.cpu);
    }
    double mejor() const { return *std::min_element(pared.begin(), pared.end()); }
    double mediana() const { return medianaDe(pared); }
    double mejorCPU() const { return *std::min_element(cpu.begin(), cpu.end()); }
    double medianaCPU() const { return medianaDe(cpu); }

private:
    static double medianaDe(std::vector<double> s) {
        std::sort(s.begin(), s.end());
        const std::size_t n = s.size();
        return n % 2 ? s[n / 2] : (s[n / 2 - 1] + s[n / 2]) / 2;
    }
};

// Size of a file in bytes, or -1 when it can't be read.
inline long long tamanoArchivo(const std::string& ruta) {
    struct stat st {};
    if (::stat(ruta.c_str(), &st) != 0) return -1;
    return static_cast<long long>(st.st_size);
}

// A field of /proc/self/status ("VmRSS", "VmHWM") in bytes, or -1.
inline long long memoriaProceso(const char* campo) {
    std::ifstream status("/proc/self/status");
    std::string clave;
    while (status >> clave) {
        if (clave.size() == std::char_traits<char>::length(campo) + 1 && clave.back() == ':' &&
            clave.compare(0, clave.size() - 1, campo) == 0) {
            long long kb = 0;
            status >> kb;
            return kb * 1024;
        }
        status.ignore(1 << 16, '\n');
    }
    return -1;
}

// The figures depend on how busy the machine is: says so first.
inline void imprimirCargaMaquina() {
    std::ifstream carga("/proc/loadavg");
    double uno = 0;
    carga >> uno;
    std::printf("machine: %u cores, load average %.1f over the last minute\n",
                std::thread::hardware_concurrency(), uno);
}

inline double megabytes(long long bytes) {
    return static_cast<double>(bytes) / 1e6;
}
inline double mebibytes(long long bytes) {
    return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

// The last line of every benchmark: "figure: NAME VALUE UNIT ratio R vs BASELINE".
inline void imprimirFigura(const char* nombre, double valor, const char* unidad, double razon,
                           const char* referencia) {
    std::printf("figure: %s %.1f %s ratio %.1f vs %s\n", nombre, valor, unidad, razon, referencia);
    std::fflush(stdout);
}

} // namespace teskal::bench
