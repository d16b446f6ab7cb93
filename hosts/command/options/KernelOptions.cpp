#include "hosts/command/options/KernelOptions.h"

#include "hosts/command/options/blurOf.h"

#include <algorithm>

namespace velorn {
namespace {

using Shape = AnalyticBlur::Shape;

} // namespace

KernelParser::KernelParser(ArgumentParser& parser)
    : m_command(parser.addCommand("kernel", "Write a blur kernel to a file.")),
      m_shapes{addShape(m_command, Shape::Gaussian, "gaussian", "Kernel of a Gaussian blur.",
                        "SIGMA", "Standard deviation."),
               addShape(m_command, Shape::Disc, "disc", "Kernel of a lens out of focus.", "RADIUS",
                        "Radius of the disc."),
               addShape(m_command, Shape::Motion, "motion", "Kernel of a straight motion.",
                        "LENGTH", "Length of the motion.")} {
    m_shapes[2]
        .parser
        .add("ANGLE", m_angle,
             angleRange() + "\nDirection: 0 is horizontal, 90 vertical, 45 rises to the right.")
        .required();
}

KernelParser::ShapeCommand KernelParser::addShape(ArgumentParser& command, Shape shape,
                                                  const char* name, const char* description,
                                                  const char* extentName, const char* extentHelp) {
    ArgumentParser& parser = command.addCommand(name, description);
    parser.add(extentName, m_extent, extentRange(shape) + "\n" + extentHelp).required();
    parser
        .add("-o,--output", m_output,
             "File to write. .txt and .csv: a matrix of numbers that read back exactly. Other "
             "extensions (.png, .tif): an enlarged picture, the largest weight white.")
        .required()
        .valueName("FILE");
    m_format.addTo(parser, "OPTIONS");
    return {name, parser};
}

KernelOptions KernelParser::result() const {
    const auto* const chosen = std::ranges::find_if(
        m_shapes, [](const ShapeCommand& shape) { return shape.parser.isChosen(); });
    const auto shape = static_cast<Shape>(std::distance(m_shapes.begin(), chosen));
    return {blurOf(shape, m_extent, m_angle, chosen->name), m_output, m_format.result(m_output)};
}

} // namespace velorn
