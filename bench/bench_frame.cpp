// Frame time of the viewport's frame loop with a heavy mesh (about 200,000
// triangles, Bumped program, shadows on), next to the bare draw of the same
// mesh in the same run. Run under Xvfb:
//   xvfb-run -a -s "-screen 0 1920x1080x24" bench/bench_frame
// The frame figures include what the platform adds per frame (for a
// QOpenGLWidget, the composition of its framebuffer into the window).

#include "MatrixStack.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "ShaderLoader.h"

#include <QApplication>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>
#include <QOpenGLVersionFunctionsFactory>
#include <QOpenGLWindow>
#include <QVBoxLayout>
#include <QWidget>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int stacks = 317;
constexpr int slices = 316; // 2 * 317 * 316 = 200,344 triangles

Matrix multiplied(const Matrix& a, const Matrix& b)
{
    Matrix result{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                result[c * 4 + r] += a[k * 4 + r] * b[c * 4 + k];
    return result;
}

// position, normal, tangent, binormal (3 floats each), uv (2).
struct Vertex
{
    float position[3], normal[3], tangent[3], binormal[3], uv[2];
};

// A unit sphere of radius 3 with a full tangent frame.
void buildSphere(std::vector<Vertex>& vertices, std::vector<unsigned>& indices)
{
    const float pi = 3.14159265f;
    for (int i = 0; i <= stacks; ++i) {
        const float v = float(i) / stacks, theta = v * pi;
        for (int j = 0; j <= slices; ++j) {
            const float u = float(j) / slices, phi = u * 2 * pi;
            const float n[3] = {std::sin(theta) * std::cos(phi), std::cos(theta),
                                std::sin(theta) * std::sin(phi)};
            Vertex vertex{};
            for (int k = 0; k < 3; ++k) {
                vertex.position[k] = 3 * n[k];
                vertex.normal[k] = n[k];
            }
            vertex.tangent[0] = -std::sin(phi);
            vertex.tangent[2] = std::cos(phi);
            vertex.binormal[0] = n[1] * vertex.tangent[2];
            vertex.binormal[1] = n[2] * vertex.tangent[0] - n[0] * vertex.tangent[2];
            vertex.binormal[2] = -n[1] * vertex.tangent[0];
            vertex.uv[0] = u;
            vertex.uv[1] = v;
            vertices.push_back(vertex);
        }
    }
    for (int i = 0; i < stacks; ++i) {
        for (int j = 0; j < slices; ++j) {
            const unsigned a = unsigned(i * (slices + 1) + j), b = a + slices + 1;
            // Counter-clockwise from outside.
            indices.insert(indices.end(), {a, a + 1, b, b, a + 1, b + 1});
        }
    }
}

// The mesh as a vehicle would hold it, drawn by the Bumped program with the
// shadow map, and by Depth in the shadow pass.
class HeavyMesh
{
public:
    void upload(QOpenGLFunctions_3_2_Core* functions)
    {
        gl = functions;
        std::vector<Vertex> vertices;
        std::vector<unsigned> indices;
        buildSphere(vertices, indices);
        indexCount = int(indices.size());
        gl->glGenVertexArrays(1, &vao);
        gl->glBindVertexArray(vao);
        GLuint buffers[2];
        gl->glGenBuffers(2, buffers);
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
        gl->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(Vertex)),
                         vertices.data(), GL_STATIC_DRAW);
        gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
        gl->glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(indices.size() * sizeof(unsigned)),
                         indices.data(), GL_STATIC_DRAW);
        // The attribute slots ShaderLoader binds.
        attribute(0, 3, offsetof(Vertex, position));
        attribute(1, 2, offsetof(Vertex, uv));
        attribute(4, 3, offsetof(Vertex, normal));
        attribute(5, 3, offsetof(Vertex, binormal));
        attribute(6, 3, offsetof(Vertex, tangent));
        gl->glBindVertexArray(0);

        const unsigned char grey[4] = {180, 180, 180, 255};
        gl->glGenTextures(1, &texture);
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, grey);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
    }

    void draw(RenderWidget::ScenePass pass, GLuint shadowTexture)
    {
        const MatrixStack* stack = MatrixStack::instance();
        if (pass == RenderWidget::ShadowPass) {
            QOpenGLShaderProgram* depth = ShaderLoader::instance()->program(Depth)->program.get();
            depth->bind();
            setMatrix(depth, "ModelViewProj", multiplied(stack->depthProjection, stack->depthView));
            drawElements();
            depth->release();
            return;
        }
        QOpenGLShaderProgram* bumped = ShaderLoader::instance()->program(Bumped)->program.get();
        bumped->bind();
        setMatrix(bumped, "ModelViewProj", multiplied(stack->projection, stack->view));
        setMatrix(bumped, "ModelView", stack->view);
        setMatrix(bumped, "View", stack->view);
        setMatrix(bumped, "Model", identityMatrix());
        setMatrix(
            bumped, "DepthBias",
            multiplied(stack->depthBias, multiplied(stack->depthProjection, stack->depthView)));
        gl->glUniformMatrix3fv(bumped->uniformLocation("NormalMatrix"), 1, GL_FALSE,
                               stack->normalMatrix.data());
        gl->glUniform3f(bumped->uniformLocation("lightPos"), 2.75f, 7.8f, 16.0f);
        gl->glUniform3f(bumped->uniformLocation("lightDiffuse"), 1, 1, 1);
        gl->glUniform3f(bumped->uniformLocation("lightAmbient"), 0.5f, 0.5f, 0.5f);
        gl->glUniform1i(bumped->uniformLocation("shadowEnabled"), 1);
        gl->glUniform1f(bumped->uniformLocation("shadowSamples"), 1);
        gl->glUniform1f(bumped->uniformLocation("shadowDivide"), 1);
        for (const char* sampler : {"diffuseMap0", "normalMap", "specularMap"})
            gl->glUniform1i(bumped->uniformLocation(sampler), 0);
        gl->glUniform1i(bumped->uniformLocation("shadowMap"), 7);
        gl->glActiveTexture(GL_TEXTURE7);
        gl->glBindTexture(GL_TEXTURE_2D, shadowTexture);
        gl->glActiveTexture(GL_TEXTURE0);
        gl->glBindTexture(GL_TEXTURE_2D, texture);
        drawElements();
        bumped->release();
    }

    int triangles() const { return indexCount / 3; }

private:
    void attribute(GLuint slot, int size, size_t offset)
    {
        gl->glEnableVertexAttribArray(slot);
        gl->glVertexAttribPointer(slot, size, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                                  reinterpret_cast<const void*>(offset));
    }

    void setMatrix(QOpenGLShaderProgram* program, const char* name, const Matrix& matrix)
    {
        gl->glUniformMatrix4fv(program->uniformLocation(name), 1, GL_FALSE, matrix.data());
    }

    void drawElements()
    {
        gl->glBindVertexArray(vao);
        gl->glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_INT, nullptr);
        gl->glBindVertexArray(0);
    }

    QOpenGLFunctions_3_2_Core* gl = nullptr;
    GLuint vao = 0;
    GLuint texture = 0;
    int indexCount = 0;
};

// One viewport with the mesh in its scene, shown at the given size.
struct Viewport
{
    explicit Viewport(int width, int height)
    {
        widget.resize(width, height);
        widget.show();
        widget.makeCurrent();
        mesh.upload(widget.glFunctions());
        widget.addSceneDrawable(
            [this](RenderWidget::ScenePass pass) { mesh.draw(pass, widget.shadowTexture); });
    }

    // Turns the event loop until the frame loop has run one more frame.
    void nextFrame()
    {
        const int target = widget.framesRun + 1;
        while (widget.framesRun < target)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
    }

    RenderWidget widget;
    HeavyMesh mesh;
};

void frameLoop(benchmark::State& state)
{
    Viewport viewport(int(state.range(0)), int(state.range(1)));
    for (int i = 0; i < 3; ++i)
        viewport.nextFrame();
    for (auto _ : state)
        viewport.nextFrame();
    state.counters["triangles"] = viewport.mesh.triangles();
}

// Clear, draw the mesh, glFinish into a framebuffer of the same size and
// samples, without the frame loop and without composition.
void bareDraw(benchmark::State& state, bool withShadowPass)
{
    Viewport viewport(int(state.range(0)), int(state.range(1)));
    RenderWidget& widget = viewport.widget;
    widget.makeCurrent();
    QOpenGLFunctions_3_2_Core* gl = widget.glFunctions();
    GLint samples = 0;
    gl->glGetIntegerv(GL_SAMPLES, &samples);
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::Depth);
    format.setSamples(samples);
    QOpenGLFramebufferObject target(int(state.range(0)), int(state.range(1)), format);
    const int shadowSize = Settings::instance()->shadowMap;
    MatrixStack::instance()->setView(widget.camera.view);

    for (auto _ : state) {
        if (withShadowPass) {
            gl->glBindFramebuffer(GL_FRAMEBUFFER, widget.shadowFbo);
            gl->glViewport(0, 0, shadowSize, shadowSize);
            gl->glClear(GL_DEPTH_BUFFER_BIT);
            viewport.mesh.draw(RenderWidget::ShadowPass, widget.shadowTexture);
        }
        target.bind();
        gl->glViewport(0, 0, int(state.range(0)), int(state.range(1)));
        gl->glClearColor(0.3f, 0.3f, 0.3f, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        viewport.mesh.draw(RenderWidget::ColourPass, widget.shadowTexture);
        gl->glFinish();
    }
    target.release();
    state.counters["samples"] = samples;
}

void bareDrawOnly(benchmark::State& state)
{
    bareDraw(state, false);
}

void bareDrawWithShadow(benchmark::State& state)
{
    bareDraw(state, true);
}

// The same frame in a QOpenGLWindow inside a window container: drawn straight
// into the window's surface, with no composition copy.
class FrameWindow : public QOpenGLWindow
{
public:
    int frames = 0;
    GLint samples = 0;

protected:
    void initializeGL() override
    {
        gl = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(context());
        gl->initializeOpenGLFunctions();
        stack = std::make_unique<MatrixStack>();
        loader = std::make_unique<ShaderLoader>();
        loader->loadShaders();
        mesh.upload(gl);
        const int size = Settings::instance()->shadowMap;
        gl->glGenFramebuffers(1, &shadowFbo);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, shadowFbo);
        gl->glGenTextures(1, &shadowTexture);
        gl->glBindTexture(GL_TEXTURE_2D, shadowTexture);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT16, size, size, 0, GL_DEPTH_COMPONENT,
                         GL_FLOAT, nullptr);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D,
                                   shadowTexture, 0);
        gl->glDrawBuffer(GL_NONE);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
        controls.resetCamera();
        gl->glEnable(GL_DEPTH_TEST);
        gl->glEnable(GL_CULL_FACE);
        gl->glGetIntegerv(GL_SAMPLES, &samples);
    }

    void resizeGL(int w, int h) override { controls.resize(w, h); }

    void paintGL() override
    {
        const int size = Settings::instance()->shadowMap;
        gl->glBindFramebuffer(GL_FRAMEBUFFER, shadowFbo);
        gl->glViewport(0, 0, size, size);
        gl->glClear(GL_DEPTH_BUFFER_BIT);
        stack->depthProjection = perspectiveMatrix(45, 1, 2, 250);
        stack->depthView = lookAt({2.75f, 7.8f, 16.0f}, {0, 0, 0}, {0, 1, 0});
        mesh.draw(RenderWidget::ShadowPass, shadowTexture);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
        gl->glViewport(0, 0, width(), height());
        gl->glClearColor(0.3f, 0.3f, 0.3f, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        stack->setView(camera.view);
        mesh.draw(RenderWidget::ColourPass, shadowTexture);
        ++frames;
        update();
    }

private:
    QOpenGLFunctions_3_2_Core* gl = nullptr;
    std::unique_ptr<MatrixStack> stack;
    std::unique_ptr<ShaderLoader> loader;
    Camera camera;
    CameraControls controls{camera};
    HeavyMesh mesh;
    GLuint shadowFbo = 0;
    GLuint shadowTexture = 0;
};

void windowContainerLoop(benchmark::State& state)
{
    auto* window = new FrameWindow;
    window->setFormat(ferroxSurfaceFormat(*Settings::instance()));
    QWidget host;
    auto* layout = new QVBoxLayout(&host);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(QWidget::createWindowContainer(window, &host));
    host.resize(int(state.range(0)), int(state.range(1)));
    host.show();
    auto nextFrame = [window] {
        const int target = window->frames + 1;
        while (window->frames < target)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
    };
    for (int i = 0; i < 3; ++i)
        nextFrame();
    for (auto _ : state)
        nextFrame();
    state.counters["samples"] = window->samples;
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({1280, 720})->Args({1920, 1080})->Unit(benchmark::kMillisecond);
}

BENCHMARK(frameLoop)->Apply(sizes);
BENCHMARK(bareDrawOnly)->Apply(sizes);
BENCHMARK(bareDrawWithShadow)->Apply(sizes);
BENCHMARK(windowContainerLoop)->Apply(sizes);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Settings settings{QString()};
    settings.shaderDir = QStringLiteral(FERROX_SOURCE_DIR "/data/shaders/glsl150");
    settings.showShadows = true;
    settings.shadowMap = 2048;
    settings.vsync = 0;
    // The program's default; FERROX_BENCH_MSAA=Disabled (or 2x..16x) for others.
    settings.msaa = qEnvironmentVariable("FERROX_BENCH_MSAA", QStringLiteral("4x"));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
