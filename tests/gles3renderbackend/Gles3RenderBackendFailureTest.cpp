// A failed createInstance leaves nothing behind.
#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3SharedResources.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/FailingAllocation.h"

#include <new>

namespace {

using namespace backendtest;

// An instance and the counter pair of its shared pointer are allocated together.
constexpr size_t kInstanceBytes = sizeof(Gles3RenderBackendInstance) + 2 * sizeof(void*);

class Gles3RenderBackendFailureTest : public RecordingGlTest {
public:
    ~Gles3RenderBackendFailureTest() override {
        failNextAllocation(0);
        letAllocationsSucceed();
    }

protected:
    void expectUsable() {
        EXPECT_EQ(gl.living(), std::vector<std::string>()) << "names of the failed instance";
        auto const instance = backend.createInstance(surface);
        EXPECT_EQ(InstanceId::of(*instance), 0U) << "a failed instance is not counted";
        EXPECT_EQ(instance->targetSize(0), (Sizes{640, 480}));
    }

    // The calls of one function that a successful createInstance makes.
    size_t callsOf(std::string const& function) {
        Gles3RenderBackend other;
        gl.forgetCalls();
        auto const instance = other.createInstance(surface);
        return gl.count(function);
    }

    Surface surface{640, 480};
    Gles3RenderBackend backend;
};

TEST_F(Gles3RenderBackendFailureTest, UnmappableRingLeavesNothingBehind) {
    gl.failNext("glMapBufferRange", GL_OUT_OF_MEMORY);
    EXPECT_EQ(failureOf([&] { backend.createInstance(surface); }),
              "#Name:could not map PBO range#Location:void* Gles3Pbo::mapRange(size_t offset, size_t size)"
              "#Description:out of memory");
    expectUsable();
}

TEST_F(Gles3RenderBackendFailureTest, RefusedTextureLeavesNothingBehind) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 0);
    try {
        backend.createInstance(surface);
        ADD_FAILURE() << "nothing was thrown";
    } catch (VelmoraRangeException const& failure) {
        EXPECT_STREQ(failure.what(), "#Name:requested buffer size exceeds maximum supported size#Location:void "
                                     "Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                                     "std::vector<size_t> const& size)");
        EXPECT_EQ(failure.limit(), 0U);
    }
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 4096);
    expectUsable();
}

// If GL fails silently the instance is made all the same; in each case no name is leaked.
TEST_F(Gles3RenderBackendFailureTest, NoFailingGlCallLosesAName) {
    for (std::string const function :
         {"glGenTextures", "glGenBuffers", "glBufferData", "glMapBufferRange", "glTexImage2D"}) {
        size_t const calls = callsOf(function);
        ASSERT_GT(calls, 0U);
        for (size_t call = 0; call < calls; ++call) {
            SCOPED_TRACE(function + ", call " + std::to_string(call));
            gl.failNext(function, GL_OUT_OF_MEMORY, call);
            std::shared_ptr<RenderBackendInstance> instance;
            Gles3RenderBackend other;
            bool failed = false;
            try {
                instance = other.createInstance(surface);
            } catch (VelmoraException const&) {
                failed = true;
            }
            // The buffer that is mapped is the first of all; the others may be without storage.
            bool const noName = function == "glGenTextures" || function == "glGenBuffers";
            bool const mapped = function == "glMapBufferRange" || function == "glBufferData";
            EXPECT_EQ(failed, noName || (mapped && call == 0));
            instance.reset();
            EXPECT_EQ(gl.living(), std::vector<std::string>());
            gl.reset(); // GL errors of calls without a name do not matter here
            EXPECT_EQ(InstanceId::of(*other.createInstance(surface)), failed ? 0U : 1U);
        }
    }
}

TEST_F(Gles3RenderBackendFailureTest, ExhaustedMemoryLeavesNothingBehind) {
    std::shared_ptr<RenderBackendInstance> instance;
    size_t const failures = failEachAllocation([&] { instance = backend.createInstance(surface); },
                                               [&] {
                                                   EXPECT_EQ(instance, nullptr);
                                                   EXPECT_EQ(gl.living(), std::vector<std::string>());
                                               });
    EXPECT_GT(failures, 20U) << "twelve resources, what they hold, the instance";
    EXPECT_EQ(InstanceId::of(*instance), 0U) << "a failed instance is not counted";
    instance.reset();
}

TEST_F(Gles3RenderBackendFailureTest, FailureOnALivingEmptyTableTakesTargetZeroOutAgain) {
    auto const first = backend.createInstance(surface);
    first->eraseTarget(0);
    auto const before = gl.living();
    failNextAllocation(kInstanceBytes);
    EXPECT_THROW(backend.createInstance(surface), std::bad_alloc);
    EXPECT_EQ(gl.living(), before);
    EXPECT_THROW(first->clear(0, {0, 0, 0}), VelmoraException) << "target 0 is back";
    EXPECT_EQ(InstanceId::of(*backend.createInstance(surface)), 1U) << "nothing stands in the way of the next try";
}

} // namespace
