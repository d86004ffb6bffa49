#include "SolverService/Images/ImageText.h"
#include "SolverService/Images/PngImage.h"
#include "Tests/SolverService/ServiceClient.h"

#include <boost/algorithm/hex.hpp>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using CameraRoutes = ServiceTest;

std::string pngChunk(const std::string& type, const std::string& data) {
    return std::string{'\0', '\0', '\0', static_cast<char>(data.size())} + type + data + "crc.";
}

std::string multipart(const std::string& image, const std::string& fileName = "; filename=\"0007.jpg\"") {
    return "--b0und\r\nContent-Disposition: form-data; name=\"note\"\r\n\r\nhello\r\n"
           "--b0und\r\nContent-Type: image/jpeg\r\nContent-Disposition: form-data; name=\"image\"" +
           fileName + "\r\n\r\n" + image + "\r\n--b0und--\r\n";
}

TEST(Images, carry_their_latex_in_a_png_that_every_reader_accepts) {
    // Written by another encoder: one pixel, its text "x".
    EXPECT_EQ(boost::algorithm::hex_lower(pngOf("x", 1, 1)),
              "89504e470d0a1a0a0000000d49484452000000010000000108000000003a7e9b550000000b69"
              "5458744c61546558000000000078b2db4f670000000d494441547801010200fdff00f000f200"
              "f13e48dc430000000049454e44ae426082");
    for (const std::string& text : {std::string("\\frac{x}{2}=½"), std::string(900, 'x')}) {
        EXPECT_EQ(latexInImage(pngOf(text, 700, 300)), text);
    }
}

TEST(Images, tell_their_latex_whichever_way_they_carry_it_and_never_more) {
    using namespace std::string_literals;
    const std::string pngStart = "\x89PNG\r\n\x1A\n";
    const std::pair<std::string, const char*> told[] = {
        {pngStart + pngChunk("IHDR", "13 bytes here") + pngChunk("tEXt", "LaTeX\0x=1"s), "x=1"},
        {pngStart + pngChunk("tEXt", "Author\0Ann"s) + pngChunk("iTXt", "LaTeX\0\0\0en\0LaTeX\0x=2"s), "x=2"},
        {"\xFF\xD8\xFF\xE0\0\4ab\xFF\xFE\0\5x=3\xFF\xD9"s, "x=3"},
    };
    for (const auto& [image, latex] : told) {
        EXPECT_EQ(latexInImage(image), latex);
    }
    for (const std::string& image :
         {pngStart + pngChunk("iTXt", "LaTeX\0\1\0\0\0zzz"s),
          pngStart + pngChunk("iTXt", "LaTeX\0\0\0no end"s), pngStart + pngChunk("tEXt", "LaTeX\0\xFF\xFE"s),
          pngStart + pngChunk("tEXt", "LaTeX\0"s), pngStart + "\xFF\xFF\xFF\xFFtEXtLaTeX\0x"s,
          pngStart + "\0\0\0\x7FtEXtLaTeX\0x=1crc."s, pngStart, "\xFF\xD8\xFF\xDA\0\2\xFF\xFE\0\5x=3"s,
          "\xFF\xD8\xFF\xFE\0\xFFx=3"s, "\xFF\xD8\xFF\xFE\0\1x=3"s, "\xFF\xD8\xFF"s, "GIF89a"s, ""s}) {
        EXPECT_EQ(latexInImage(image), std::nullopt) << testing::PrintToString(image);
    }
}

TEST_F(CameraRoutes, recognize_the_problem_of_an_uploaded_image) {
    const auto upload = [&](const std::string& body,
                            const std::string& type = "multipart/form-data; boundary=b0und") {
        return client.postBody("/api/getLatex?mode=&sessionid=s1&language=en", body, type);
    };
    const ClientReply image = client.get("/image?query=2x%2B1%3D5&width=64");
    EXPECT_EQ(image.header("Content-Type"), "image/png");
    const boost::json::value found = upload(multipart(image.body)).json();
    EXPECT_EQ(found.at("success"), true);
    EXPECT_EQ(found.at("latex"), "2x+1=5");
    EXPECT_EQ(service->requestLog().requestsTo("/api/getLatex").at(0).body, multipart(image.body));

    const boost::json::value nothing = upload(multipart("no image")).json();
    EXPECT_EQ(nothing.at("success"), false);
    EXPECT_TRUE(nothing.at("error").is_string());
    EXPECT_EQ(nothing.at("user_message_count"), 1);

    EXPECT_EQ(upload("x", "image/jpeg").status, 400);
    for (const std::string& body :
         {multipart("x", ""), std::string(), std::string("--b0und"), std::string("--b0und\r\n\r\n"),
          std::string("--other--\r\n"), multipart("x").substr(0, 150),
          multipart("x").substr(0, 60) + "\r\n--b0und--"}) {
        EXPECT_EQ(upload(body).status, 400) << body;
    }
}

} // namespace
} // namespace teralune::service
