#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

/** The checks behind the validators that the example policies name, on what an expression matched. */
namespace Checksums {

/** Value of a character: 0 to 9, then A to Z as 10 to 35; the filler of travel documents is 0. */
inline int Value(char c) {
    return c == '<' ? 0 : std::isdigit(static_cast<unsigned char>(c)) != 0 ? c - '0' : c - 'A' + 10;
}

/** What counts of a match: its letters, in capitals, its digits and fillers. Separators are passed over. */
inline std::string Compact(std::string_view strMatch) {
    std::string strOut;
    for (const char c : strMatch) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '<') {
            strOut += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return strOut;
}

/** Each character by its value in decimal: A becomes 10. */
inline std::string Expand(std::string_view strText) {
    std::string strOut;
    for (const char c : strText) {
        strOut += std::to_string(Value(c));
    }
    return strOut;
}

inline int Modulo(std::string_view strDigits, int iModulus) {
    int iRest = 0;
    for (const char c : strDigits) {
        iRest = (iRest * 10 + Value(c)) % iModulus;
    }
    return iRest;
}

/** Sum of the values, each times its weight; weights begin anew when they run out. */
template <std::size_t COUNT>
int WeightedSum(std::string_view strText, const int (&aWeights)[COUNT]) {
    int iSum = 0;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        iSum += Value(strText[i]) * aWeights[i % COUNT];
    }
    return iSum;
}

inline bool Luhn(const std::string& strText) {
    int iSum = 0;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        const int iDouble = Value(strText[strText.size() - 1 - i]) * (i % 2 == 0 ? 1 : 2);
        iSum += iDouble / 10 + iDouble % 10;
    }
    return iSum % 10 == 0;
}

inline bool Verhoeff(const std::string& strText) {
    static constexpr char aPermutation[8][11] = {"0123456789", "1576283094", "5803796142", "8916043527",
                                                 "9453126870", "4286573901", "2793806415", "7046913258"};
    int iCheck = 0;
    for (std::size_t i = 0; i < strText.size(); ++i) {
        const int iNext = aPermutation[i % 8][Value(strText[strText.size() - 1 - i])] - '0';
        const int iTurn = iCheck < 5 ? iCheck + iNext % 5 : iCheck + 5 - iNext % 5;  // the dihedral group of order ten
        iCheck = ((iCheck < 5) == (iNext < 5) ? 0 : 5) + iTurn % 5;
    }
    return iCheck == 0;
}

/** ISO/IEC 7064, pure system with one check character. */
inline bool Mod11_2(const std::string& strText) {
    int iCheck = 0;
    for (const char c : strText) {
        iCheck = (iCheck * 2 + (c == 'X' ? 10 : Value(c))) % 11;
    }
    return iCheck == 1;
}

/** ISO/IEC 7064, hybrid system of decimal digits. */
inline bool Mod11_10(const std::string& strText) {
    int iCheck = 10;
    for (std::size_t i = 0; i + 1 < strText.size(); ++i) {
        const int iSum = (iCheck + Value(strText[i])) % 10;
        iCheck = (iSum == 0 ? 10 : iSum) * 2 % 11;
    }
    return (iCheck + Value(strText.back())) % 10 == 1;
}

inline bool Iban(const std::string& strText) {
    return Modulo(Expand(strText.substr(4) + strText.substr(0, 4)), 97) == 1;
}

inline bool AbaRoutingNumber(const std::string& strText) {
    static constexpr int aWeights[] = {3, 7, 1};
    return WeightedSum(strText, aWeights) % 10 == 0;
}

inline bool AuTaxFileNumber(const std::string& strText) {
    static constexpr int aWeights[] = {1, 4, 3, 7, 5, 8, 6, 9, 10};
    return WeightedSum(strText, aWeights) % 11 == 0;
}

inline bool BrCpf(const std::string& strText) {
    static constexpr int aFirst[] = {10, 9, 8, 7, 6, 5, 4, 3, 2};
    static constexpr int aSecond[] = {11, 10, 9, 8, 7, 6, 5, 4, 3, 2};
    const auto digit = [](int iSum) { return iSum * 10 % 11 % 10; };
    return digit(WeightedSum(strText.substr(0, 9), aFirst)) == Value(strText[9]) &&
           digit(WeightedSum(strText.substr(0, 10), aSecond)) == Value(strText[10]);
}

inline bool EsDniNie(const std::string& strText) {
    std::string strDigits = strText.substr(0, 8);
    if (const std::size_t iForeigner = std::string_view("XYZ").find(strText[0]); iForeigner != std::string_view::npos) {
        strDigits[0] = static_cast<char>('0' + iForeigner);
    }
    return "TRWAGMYFPDXBNJZSQVHLCKE"[Modulo(strDigits, 23)] == strText[8];
}

inline bool FrNir(const std::string& strText) {
    std::string strDigits = strText.substr(0, 13);
    if (std::isalpha(static_cast<unsigned char>(strDigits[6])) != 0) {
        strDigits.replace(5, 2, strDigits[6] == 'A' ? "19" : "18");
    }
    return 97 - Modulo(strDigits, 97) == Modulo(strText.substr(13), 100);
}

inline bool FreightContainer(const std::string& strText) {
    int iSum = 0;
    for (std::size_t i = 0; i + 1 < strText.size(); ++i) {
        const int iValue = Value(strText[i]);
        const int iLetter = iValue < 10 ? iValue : iValue + (iValue - 1) / 10;  // 11, 22 and 33 are left out
        iSum += iLetter << i;
    }
    return iSum % 11 % 10 == Value(strText.back());
}

inline bool GbNhsNumber(const std::string& strText) {
    static constexpr int aWeights[] = {10, 9, 8, 7, 6, 5, 4, 3, 2, 1};
    return WeightedSum(strText, aWeights) % 11 == 0;
}

inline bool Gtin(const std::string& strText) {
    static constexpr int aWeights[] = {1, 3};
    return WeightedSum(std::string(strText.rbegin(), strText.rend()), aWeights) % 10 == 0;
}

/** Second line of a passport: number, date of birth, date of expiry, optional data, and all of them. */
inline bool Icao9303(const std::string& strLine) {
    const auto passes = [](const std::string& strField, char cCheck) {
        static constexpr int aWeights[] = {7, 3, 1};
        return WeightedSum(strField, aWeights) % 10 == Value(cCheck);
    };
    return passes(strLine.substr(0, 9), strLine[9]) && passes(strLine.substr(13, 6), strLine[19]) &&
           passes(strLine.substr(21, 6), strLine[27]) && passes(strLine.substr(28, 14), strLine[42]) &&
           passes(strLine.substr(0, 10) + strLine.substr(13, 7) + strLine.substr(21, 22), strLine[43]);
}

inline bool NlBsn(const std::string& strText) {
    static constexpr int aWeights[] = {9, 8, 7, 6, 5, 4, 3, 2, -1};
    return WeightedSum(strText, aWeights) % 11 == 0;
}

inline bool PlPesel(const std::string& strText) {
    static constexpr int aWeights[] = {1, 3, 7, 9, 1, 3, 7, 9, 1, 3, 1};
    return WeightedSum(strText, aWeights) % 10 == 0;
}

inline bool Vin(const std::string& strText) {
    static constexpr std::string_view strLetters = "ABCDEFGHJKLMNPRSTUVWXYZ";
    static constexpr std::string_view strValues = "12345678123457923456789";
    static constexpr int aWeights[] = {8, 7, 6, 5, 4, 3, 2, 10, 0, 9, 8, 7, 6, 5, 4, 3, 2};
    std::string strDigits = strText;
    for (char& c : strDigits) {
        const std::size_t iLetter = strLetters.find(c);
        c = iLetter == std::string_view::npos ? c : strValues[iLetter];
    }
    return "0123456789X"[WeightedSum(strDigits, aWeights) % 11] == strText[8];
}

inline bool Isin(const std::string& strText) {
    return Luhn(Expand(strText));
}

inline bool Lei(const std::string& strText) {
    return Modulo(Expand(strText), 97) == 1;
}

inline bool SePersonnummer(const std::string& strText) {
    return Luhn(strText.substr(strText.size() - 10));
}

inline bool UsNpi(const std::string& strText) {
    return Luhn("80840" + strText);
}

struct SCheck {
    std::string_view strValidator;
    bool (*fnPasses)(const std::string& strCompact);
};

/** By the validator's internal name; each takes a compact match. */
inline constexpr SCheck ALL[] = {
    {"aba-routing-number", AbaRoutingNumber},
    {"au-tfn", AuTaxFileNumber},
    {"br-cpf", BrCpf},
    {"ca-sin", Luhn},
    {"de-tax-id", Mod11_10},
    {"es-dni-nie", EsDniNie},
    {"fr-nir", FrNir},
    {"gb-nhs-number", GbNhsNumber},
    {"gtin", Gtin},
    {"iban", Iban},
    {"icao-9303", Icao9303},
    {"imei", Luhn},
    {"in-aadhaar", Verhoeff},
    {"isin", Isin},
    {"isni", Mod11_2},
    {"iso-6346", FreightContainer},
    {"lei", Lei},
    {"luhn", Luhn},
    {"nl-bsn", NlBsn},
    {"pl-pesel", PlPesel},
    {"se-personnummer", SePersonnummer},
    {"us-npi", UsNpi},
    {"vin", Vin},
};

/** @return null for a validator without a check here */
inline const SCheck* Find(std::string_view strValidator) {
    const auto iFound = std::ranges::find(ALL, strValidator, &SCheck::strValidator);
    return iFound == std::end(ALL) ? nullptr : &*iFound;
}

}  // namespace Checksums
