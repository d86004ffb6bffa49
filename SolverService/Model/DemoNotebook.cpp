#include "SolverService/Model/DemoNotebook.h"

#include "SolverService/Http/Parameters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>

namespace teralune::service {

namespace {

constexpr const char* solutions = "Solutions";
constexpr const char* practice = "Practice";
constexpr const char* graphing = "Graphing Calculator";
constexpr std::int64_t secondsPerDay = 86'400;

struct DemoNote {
    const char* problem;
    const char* savedFrom;
    const char* topic;
    /// Joined with commas.
    const char* tags;
    const char* notes;
    bool isFavorite;
    /// The page of a practice note, the functions of a graph note.
    const char* source;
};

constexpr std::array demo{
    DemoNote{"3x-7=11", solutions, "Linear Equations", "homework,chapter 2", "", true, ""},
    DemoNote{"x^2-5x+6=0", solutions, "Quadratic Equations", "homework,chapter 4", "Both factors by heart.",
             true, ""},
    DemoNote{"2(x+3)=4x-8", solutions, "Linear Equations", "homework,chapter 2", "", false, ""},
    DemoNote{"\\frac{x}{2}+\\frac{x}{3}=5", solutions, "Linear Equations", "chapter 2,fractions", "", false,
             ""},
    DemoNote{"y=x^2-4x+3", graphing, "Graphs", "parabolas", "Vertex at (2,-1).", false, "x^2-4x+3"},
    DemoNote{"x^2=49", solutions, "Quadratic Equations", "chapter 4", "", false, ""},
    DemoNote{"5(t-2)-3(t+1)=t+4", practice, "Linear Equations", "practice", "", false,
             "/practice/linear-equations#3"},
    DemoNote{"2x^2-3x-2=0", solutions, "Quadratic Equations", "homework,chapter 4", "", false, ""},
    DemoNote{"x^2-2x-4=0", solutions, "Quadratic Equations", "chapter 4,surds", "Golden-ratio cousin.", true,
             ""},
    DemoNote{"0.05p+0.08(12000-p)=780", solutions, "Finance", "word problems", "How much was put at 5%?",
             false, ""},
    DemoNote{"y=\\sin(x)", graphing, "Graphs", "trigonometry", "", true, "sin(x)"},
    DemoNote{"9/5c+32=212", solutions, "Physics", "temperature", "Boiling point in Celsius.", false, ""},
    DemoNote{"x^2+4x+4=0", practice, "Quadratic Equations", "practice,perfect squares", "", false,
             "/practice/quadratic-equations#1"},
    DemoNote{"4.9t^2=19.6", solutions, "Physics", "free fall", "Drop from 19.6 m.", false, ""},
    DemoNote{"2w+2(w+6)=52", solutions, "Geometry", "word problems,perimeter",
             "Rectangle 6 longer than wide.", false, ""},
    DemoNote{"w(w+5)=84", solutions, "Geometry", "word problems,area", "", false, ""},
    DemoNote{"\\frac{2x-1}{3}=\\frac{x+4}{2}", solutions, "Linear Equations", "fractions,exam", "", true, ""},
    DemoNote{"y=\\frac{1}{2}x+2,\\:y=-x+5", graphing, "Graphs", "lines,systems", "They meet at x=2.", false,
             "1/2*x+2;-x+5"},
    DemoNote{"x^2+x+1=0", solutions, "Quadratic Equations", "exam", "No real root.", false, ""},
    DemoNote{"7-2(3-x)=5x-8", practice, "Linear Equations", "practice", "", false,
             "/practice/linear-equations#7"},
    DemoNote{"n+(n+1)+(n+2)=72", solutions, "Number Theory", "word problems", "Three consecutive numbers.",
             false, ""},
    DemoNote{"n(n+1)=132", solutions, "Number Theory", "word problems", "", false, ""},
    DemoNote{"-16t^2+64t=0", solutions, "Physics", "projectiles", "When does the ball land?", false, ""},
    DemoNote{"y=e^x", graphing, "Graphs", "exponentials", "", false, "exp(x)"},
    DemoNote{"6x^2+x-12=0", solutions, "Quadratic Equations", "chapter 4,factoring", "", false, ""},
    DemoNote{"\\frac{3}{4}x-\\frac{1}{6}=\\frac{5}{3}", solutions, "Linear Equations", "fractions", "", false,
             ""},
    DemoNote{"x^2-6x=7", practice, "Quadratic Equations", "practice,completing the square", "", false,
             "/practice/quadratic-equations#4"},
    DemoNote{"180=2a+40", solutions, "Geometry", "triangles", "Isosceles, apex 40 degrees.", false, ""},
    DemoNote{"a+(a+20)+(2a-40)=180", solutions, "Geometry", "triangles", "", false, ""},
    DemoNote{"1.15d=46", solutions, "Finance", "percent", "Price before the 15% tip.", false, ""},
    DemoNote{"y=\\ln(x)", graphing, "Graphs", "logarithms", "", false, "ln(x)"},
    DemoNote{"3(2x-1)=6x-3", solutions, "Linear Equations", "identities", "True whatever x is.", false, ""},
    DemoNote{"4x+1=4x-5", solutions, "Linear Equations", "contradictions", "", false, ""},
    DemoNote{"60t+75(t-1)=330", solutions, "Physics", "word problems,motion", "", false, ""},
    DemoNote{"(x-3)^2=16", solutions, "Quadratic Equations", "chapter 4", "", false, ""},
    DemoNote{"2(x-1)^2-5=x(x+3)", practice, "Quadratic Equations", "practice,exam", "", false,
             "/practice/quadratic-equations#9"},
    DemoNote{"8-\\frac{m}{4}=3", solutions, "Linear Equations", "chapter 2", "", false, ""},
    DemoNote{"y=|x-2|", graphing, "Graphs", "absolute value", "", false, "abs(x-2)"},
    DemoNote{"1.5k-0.25=0.5k+2", solutions, "Linear Equations", "decimals", "", false, ""},
    DemoNote{"x^2-x-1=0", solutions, "Quadratic Equations", "surds,golden ratio", "Where it all began.", true,
             ""},
};

std::vector<std::string> pieces(std::string joined, char separator) {
    std::vector<std::string> found;
    while (!joined.empty()) {
        const std::size_t end = std::min(joined.size(), joined.find(separator));
        found.push_back(joined.substr(0, end));
        joined.erase(0, end + 1);
    }
    return found;
}

std::string graphDefinition(const DemoNote& note) {
    std::string functions;
    for (const std::string& function : pieces(note.source, ';')) {
        functions += (functions.empty() ? "\"" : ",\"") + function + "\"";
    }
    return "{\"functions\":[" + functions +
           "],\"window\":{\"xMin\":-10,\"xMax\":10,\"yMin\":-10,\"yMax\":10}}";
}

} // namespace

std::vector<NoteRecord> demoNotes(std::int64_t now) {
    std::vector<NoteRecord> notes;
    std::int64_t age = 0;
    for (const DemoNote& demoNote : demo) {
        NoteRecord note;
        note.problem = demoNote.problem;
        note.savedFrom = demoNote.savedFrom;
        note.topic = demoNote.topic;
        note.tags = pieces(demoNote.tags, ',');
        note.notes = demoNote.notes;
        note.isFavorite = demoNote.isFavorite;
        if (note.savedFrom == graphing) {
            note.graph = graphDefinition(demoNote);
            note.graphID = "demo" + std::to_string(notes.size());
        } else if (note.savedFrom == practice) {
            note.url = demoNote.source;
        }
        // Uneven gaps, as between a student's evenings; the odd seconds keep every time different.
        age += secondsPerDay * static_cast<std::int64_t>(1 + notes.size() % 4) + 3'671;
        note.lastChange = now - age;
        notes.push_back(std::move(note));
    }
    return notes;
}

Result<std::vector<NoteRecord>> notesFromFile(const std::string& file) {
    std::ifstream input(file);
    std::vector<NoteRecord> notes;
    std::string line;
    while (std::getline(input, line)) {
        while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0) {
            line.pop_back();
        }
        if (!isText(line)) {
            return Error{"TeraluneSolverService", 0, file + " is not UTF-8 text.", {}};
        }
        if (!line.empty()) {
            NoteRecord note;
            note.problem = line;
            note.topic = "Equations";
            notes.push_back(std::move(note));
        }
    }
    if (!input.eof()) {
        return Error{"TeraluneSolverService", 0, file + " can't be read.", {}};
    }
    return notes;
}

} // namespace teralune::service
